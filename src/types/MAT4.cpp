#include <ZxCore3D/types/MAT4.h>

const MAT4<double> g_M4Ed = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
const MAT4<float> g_M4Ef = {{1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1, 0, 0, 0, 0, 1}};
