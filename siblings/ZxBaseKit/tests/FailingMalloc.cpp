// The counting malloc of the object tests, for this program.

#include "object/FailingMalloc.cpp"
