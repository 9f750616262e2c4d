#pragma once

/// Everything that ZxBaseKit offers.

#include <ZxBaseKit/KeyStrings.h>
#include <ZxBaseKit/Limits.h>
#include <ZxBaseKit/Module.h>
#include <ZxBaseKit/ModuleCount.h>
#include <ZxBaseKit/TRef.h>
#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxStream.h>
#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>
