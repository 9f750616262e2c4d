#include <ZxCore3D/render/GLEnums.h>

#include <GL/gl.h>

// A type of the system's header and a value of both.
GLenum before() { return GL_TRIANGLES; }
