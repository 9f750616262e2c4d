#pragma once

/// Everything that ZxCore3D offers.

#include <ZxCore3D/module/Module.h>
#include <ZxCore3D/render/FragmentOps.h>
#include <ZxCore3D/render/GLEnums.h>
#include <ZxCore3D/render/ProgramCPU.h>
#include <ZxCore3D/render/ShaderCPU.h>
#include <ZxCore3D/render/StdFragmentShader.h>
#include <ZxCore3D/render/StdVertexShader.h>
#include <ZxCore3D/render/TRenderBase.h>
#include <ZxCore3D/render/TRenderCPU.h>
#include <ZxCore3D/render/TZxGL.h>
