#pragma once

#include <memory>

#include "Context.h"

namespace zxpy {

/// Declares the context's class, so that the signatures of others can name it.
std::unique_ptr<TContextClass> DeclareContext(py::module_& m);

/// Defines what the class can do.
void BindContext(TContextClass& c);

} // namespace zxpy
