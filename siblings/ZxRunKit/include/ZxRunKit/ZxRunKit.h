#pragma once

/// Everything that ZxRunKit offers.

#include <ZxRunKit/CLocale.h>
#include <ZxRunKit/Format.h>
#include <ZxRunKit/Module.h>
