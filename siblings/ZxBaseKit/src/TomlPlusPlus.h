#pragma once

// The library by which the text format is read and written, set up in one way for all who use it.

// Its compiled form writes floating-point numbers by a stream, with all the digits that any of them
// may need. By <charconv> it writes the fewest that read back as the same number, and that can be
// had of its header form alone.
#define TOML_HEADER_ONLY 1
#define TOML_FLOAT_CHARCONV 1
#define TOML_INT_CHARCONV 1
#include <toml++/toml.h>
