#include <GL/gl.h>

#include <ZxCore3D/render/GLEnums.h>

GLenum behind() { return GL_TRIANGLES; }
