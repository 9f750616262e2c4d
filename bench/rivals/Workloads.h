#pragma once

#include "FillWorkloads.h"
#include "LineWorkloads.h"
#include "MeshWorkloads.h"
#include "PixelWorkloads.h"
#include "TextureWorkloads.h"
#include "VertexWorkloads.h"

namespace rivals {

/// The variants that both sides draw, family by family.
template <class TGl> void ListWorkloads(TScene<TGl>& scene) {
  ListClears(scene);
  ListFlatQuads(scene);
  ListGouraud(scene);
  ListDepthFail(scene);
  ListTextures(scene);
  ListMeshes(scene);
  ListLines(scene);
  ListPoints(scene);
  ListOutside(scene);
  ListCulled(scene);
  ListClipped(scene);
  ListStencil(scene);
  ListDrawPixels(scene);
  ListReadPixels(scene);
}

} // namespace rivals
