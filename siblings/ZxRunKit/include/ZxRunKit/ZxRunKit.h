#pragma once

/// Everything that ZxRunKit offers.

#include <ZxRunKit/Format.h>
#include <ZxRunKit/Module.h>
