// The counting malloc of the object tests, for this program too.
#include "object/FailingMalloc.cpp"
