#pragma once

/// Everything that ZxPixelKit offers.

#include <ZxPixelKit/DATASURFACE.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Module.h>
#include <ZxPixelKit/Surface.h>
#include <ZxPixelKit/TDataSurface.h>
