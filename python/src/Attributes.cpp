#include <cstring>
#include <limits>

#include "Common.h"
#include "Pins.h"

namespace zxpy {

namespace {

using py::arg;
using Zx3D::TAttributable;
using Zx3D::TAttributes;
using Zx3D::TVariant;
using Zx3D::TZxNamed;

// --- Values in

// An integer takes the narrowest of int32, int64 and uint64 that holds it.
bool SetInteger(TVariant& self, const py::int_& value) {
  int overflow = 0;
  const long wide = PyLong_AsLongAndOverflow(value.ptr(), &overflow);
  if (overflow == 0) {
    const bool narrow =
        wide >= std::numeric_limits<int>::min() && wide <= std::numeric_limits<int>::max();
    return narrow ? self.Set(static_cast<int>(wide)) : self.Set(wide);
  }
  const unsigned long huge = PyLong_AsUnsignedLong(value.ptr());
  if (PyErr_Occurred() != nullptr) {
    throw py::error_already_set();
  }
  return self.Set(huge);
}

DATA_TYPE TypeOfScalar(const py::dtype& dtype) {
  for (unsigned int code = DATA_TYPE_BOOL; code <= DATA_TYPE_DOUBLE; ++code) {
    if (dtype.equal(TypeOf(static_cast<DATA_TYPE>(code)))) {
      return static_cast<DATA_TYPE>(code);
    }
  }
  throw py::type_error("a variant takes no " + TextOf(dtype));
}

template <class T> bool SetAs(TVariant& self, const py::handle& value) {
  return self.Set(value.cast<T>());
}

bool SetFitting(TVariant& self, const py::handle& value, unsigned int type) {
  switch (type) {
  case DATA_TYPE_BOOL:
    return SetAs<bool>(self, value);
  case DATA_TYPE_INT8: // the caster of a character is that of a text
    return self.Set(static_cast<signed char>(value.cast<std::int8_t>()));
  case DATA_TYPE_UINT8:
    return self.Set(static_cast<unsigned char>(value.cast<std::uint8_t>()));
  case DATA_TYPE_INT16:
    return SetAs<short>(self, value);
  case DATA_TYPE_UINT16:
    return SetAs<unsigned short>(self, value);
  case DATA_TYPE_INT32:
    return SetAs<int>(self, value);
  case DATA_TYPE_UINT32:
    return SetAs<unsigned int>(self, value);
  case DATA_TYPE_INT64:
    return SetAs<long>(self, value);
  case DATA_TYPE_UINT64:
    return SetAs<unsigned long>(self, value);
  case DATA_TYPE_FLOAT:
    return SetAs<float>(self, value);
  case DATA_TYPE_DOUBLE:
    return SetAs<double>(self, value);
  default:
    throw py::type_error("a scalar has one of the types 1 to 11");
  }
}

bool SetScalar(TVariant& self, const py::handle& value, unsigned int type) {
  try {
    return SetFitting(self, value, type);
  } catch (const py::cast_error&) {
    throw py::type_error(TextOf(value) + " is no value of data type " + std::to_string(type));
  }
}

bool SetText(TVariant& self, const py::handle& value) {
  const auto text = value.cast<std::string>();
  return self.Set(text.data(), text.size());
}

// Arrays of scalars of the eleven types, and of vectors of floats or doubles.
bool SetArray(TVariant& self, const py::object& object) {
  const py::array array = py::array::ensure(object, py::array::c_style);
  if (!array || array.ndim() < 1 || array.ndim() > 2) {
    PyErr_Clear();
    throw py::type_error("a variant takes an array of scalars, or of vectors of 1 to 4 floats");
  }
  const DATA_TYPE type = TypeOfScalar(array.dtype());
  const auto count = static_cast<unsigned long>(array.shape(0));
  const auto components = static_cast<unsigned long>(array.ndim() == 2 ? array.shape(1) : 1);
  if (type == DATA_TYPE_FLOAT) {
    const auto* const data = static_cast<const float*>(array.data());
    return array.ndim() == 2 ? self.SetArray(data, components, count) : self.SetArray(data, count);
  }
  if (type == DATA_TYPE_DOUBLE) {
    const auto* const data = static_cast<const double*>(array.data());
    return array.ndim() == 2 ? self.SetArray(data, components, count) : self.SetArray(data, count);
  }
  if (array.ndim() != 1) {
    throw py::type_error("a variant takes arrays of vectors of floats or doubles alone");
  }
  return self.SetArray(type, count, array.data(), static_cast<unsigned long>(array.nbytes()));
}

bool Set(TVariant& self, const py::object& value) {
  if (value.is_none()) {
    self.Reset();
    return true;
  }
  if (py::isinstance<TVariant>(value)) {
    self = value.cast<const TVariant&>();
    return true;
  }
  if (py::isinstance<py::bool_>(value)) {
    return self.Set(value.cast<bool>());
  }
  if (py::isinstance<py::int_>(value)) {
    return SetInteger(self, value);
  }
  if (py::isinstance<py::str>(value) || py::isinstance<py::bytes>(value)) {
    return SetText(self, value);
  }
  if (py::isinstance<py::array>(value) && value.cast<py::array>().ndim() > 0) {
    return SetArray(self, value);
  }
  if (py::isinstance(value, py::module_::import("numpy").attr("generic"))) {
    return SetScalar(self, value.attr("item")(), TypeOfScalar(value.attr("dtype")));
  }
  if (py::isinstance<py::float_>(value)) {
    return self.Set(value.cast<double>());
  }
  throw py::type_error("a variant takes no " + TextOf(py::type::handle_of(value).attr("__name__")));
}

TVariant VariantOf(const py::object& value) {
  TVariant variant;
  if (!Set(variant, value)) {
    throw py::value_error("a variant can't take this value");
  }
  return variant;
}

// --- Values out

py::object GetAs(const TVariant& self, unsigned int type) {
  switch (type) {
  case DATA_TYPE_BOOL:
    return py::bool_(self.Get<bool>());
  case DATA_TYPE_INT8:
    return py::int_(static_cast<int>(self.Get<signed char>()));
  case DATA_TYPE_UINT8:
    return py::int_(static_cast<int>(self.Get<unsigned char>()));
  case DATA_TYPE_INT16:
    return py::int_(self.Get<short>());
  case DATA_TYPE_UINT16:
    return py::int_(self.Get<unsigned short>());
  case DATA_TYPE_INT32:
    return py::int_(self.Get<int>());
  case DATA_TYPE_UINT32:
    return py::int_(self.Get<unsigned int>());
  case DATA_TYPE_INT64:
    return py::int_(self.Get<long>());
  case DATA_TYPE_UINT64:
    return py::int_(self.Get<unsigned long>());
  case DATA_TYPE_FLOAT:
    return py::float_(static_cast<double>(self.Get<float>()));
  case DATA_TYPE_DOUBLE:
    return py::float_(self.Get<double>());
  default:
    throw py::type_error("a scalar has one of the types 1 to 11");
  }
}

py::array ArrayOf(const TVariant& self) {
  unsigned long bytes = 0;
  const void* const data = self.GetArrayData(&bytes);
  const py::dtype type = TypeOf(static_cast<DATA_TYPE>(TVariant::GetBaseCode(self.Type)));
  const auto components = static_cast<py::ssize_t>(TVariant::GetComponents(self.Type));
  std::vector<py::ssize_t> shape = {static_cast<py::ssize_t>(self.Count)};
  if (components > 1) {
    shape.push_back(components);
  }
  return py::array(type, shape, {}, data);
}

py::object Get(const TVariant& self) {
  const std::uint32_t type = self.Type;
  if (type == DATA_TYPE_NONE) {
    return py::none();
  }
  if (type <= DATA_TYPE_DOUBLE) {
    return GetAs(self, type);
  }
  if (type == DATA_TYPE_STRING) {
    return py::bytes(self.GetStringPtr(), self.GetStringLength())
        .attr("decode")("utf-8", "surrogateescape");
  }
  if ((type & TVariant::s_ArrayFlag) != 0) {
    return ArrayOf(self);
  }
  const unsigned long components = TVariant::GetComponents(self.Type);
  int values[8] = {};
  if (self.GetVector(values, components)) {
    py::tuple out(components);
    for (unsigned long i = 0; i < components; ++i) {
      out[i] = values[i];
    }
    return out;
  }
  throw py::type_error("a variant of type " + std::to_string(type) + " has no Python form");
}

void BindVariant(py::module_& m) {
  py::class_<TVariant>(m, "TVariant",
                       "A tagged value: nothing, a scalar, a short vector of integers, a counted "
                       "array or a text. Arrays are copied in and out.")
      .def(py::init<>(), "The empty variant.")
      .def(py::init(&VariantOf), arg("value"), "A variant of what `Set` takes.")
      .def_readonly("Type", &TVariant::Type, "The tag.")
      .def_property_readonly(
          "Count",
          [](const TVariant& self) -> std::uint64_t {
            return self.Type == DATA_TYPE_NONE || self.Type == DATA_TYPE_REF ? 0 : self.Count;
          },
          "1 for a scalar or a vector, the length of a text, the number of elements of an array.")
      .def("Reset", &TVariant::Reset, "Makes the variant empty.")
      .def("Swap", &TVariant::Swap, arg("other"), "Exchanges two values.")
      .def("Set", Set, arg("value").none(true),
           "Stores None, a bool, an int (as int32, int64 or uint64, the first that holds it), a "
           "float (as a double), a NumPy scalar of its type, a text, bytes, an array of scalars or "
           "of vectors of 1 to 4 floats, or another variant. Raises `TypeError` for anything else.")
      .def("Set", SetScalar, arg("value"), arg("type"),
           "Stores a scalar as one of the `DATA_TYPE`s 1 to 11.")
      .def(
          "SetVector",
          [](TVariant& self, const std::vector<int>& values) {
            return self.SetVector(values.data(), values.size());
          },
          arg("values"), "Stores a vector of 1 to 4 integers; False for another number.")
      .def("SetArray", SetArray, arg("values"), "Stores a counted array.")
      .def("Get", Get, "The value in Python's own form; arrays are copies.")
      .def("Get", GetAs, arg("type"),
           "A scalar converted to one of the `DATA_TYPE`s 1 to 11; `TZxMessage` for anything but a "
           "scalar.")
      .def("GetStringLength", &TVariant::GetStringLength, Doc("TVariant::GetStringLength"))
      .def("GetArrayDataSize", &TVariant::GetArrayDataSize, Doc("TVariant::GetArrayDataSize"))
      .def(
          "ToString", [](const TVariant& self) { return self.ToString(); },
          "The value with its type as text, such as int32(5); empty where there is no text form.")
      .def(
          "AsString",
          [](const TVariant& self) -> std::optional<std::string> {
            std::string text;
            return self.AsString(&text) ? std::optional(text) : std::nullopt;
          },
          "The value alone as text; None where there is no such form.")
      .def("FromString", &TVariant::FromString, arg("text"), Doc("TVariant::FromString"))
      .def("__repr__", [](const TVariant& self) {
        const std::string text = self.ToString();
        return "<TVariant " + (text.empty() ? std::string("without a text form") : text) + ">";
      });
}

// --- Lists

py::object Copied(const TVariant* value) {
  return value != nullptr ? py::cast(*value) : py::none();
}

void BindLists(py::module_& m) {
  const char* const found = "A copy of the value under `name`, or None.";
  py::class_<TAttributes>(m, "TAttributes",
                          "Values by name, in the byte order of the names. Values go in and come "
                          "out as copies.")
      .def(py::init<>())
      .def(py::init<const TAttributes&>(), arg("other"), "A deep copy.")
      .def("Clear", &TAttributes::Clear, "Removes all values.")
      .def("GetCount", &TAttributes::GetCount, "The number of values.")
      .def(
          "GetValues",
          [](const TAttributes& self) {
            py::dict values;
            for (const auto& [name, value] : self.GetValues()) {
              values[py::bytes(name).attr("decode")("utf-8", "surrogateescape")] = value;
            }
            return values;
          },
          "A dictionary of copies, in the order of the names.")
      .def(
          "SetValue",
          [](TAttributes& self, const std::string& name, const py::object& value) {
            return self.SetValue(name, VariantOf(value));
          },
          arg("name"), arg("value").none(true),
          "Stores what a `TVariant` takes under `name`, in place of what is there.")
      .def(
          "FindValue",
          [](const TAttributes& self, const std::string& name) {
            return Copied(self.FindValue(name));
          },
          arg("name"), found)
      .def(
          "FindValueE",
          [](const TAttributes& self, const std::string& name) {
            return Copied(self.FindValueE(name));
          },
          arg("name"), "The same; raises `TZxMessage` where there is none.")
      .def(
          "RemoveValue",
          [](TAttributes& self, const std::string& name) { return self.RemoveValue(name); },
          arg("name"), Doc("TAttributes::RemoveValue"));

  py::class_<TAttributable>(m, "TAttributable", Doc("TAttributable"))
      .def(py::init<>())
      .def("Swap", &TAttributable::Swap, arg("other"), "Exchanges the two lists.")
      .def("CheckAttributesE", &TAttributable::CheckAttributesE,
           "Raises `TZxMessage` if there is no list.")
      .def("ClearAttributes", &TAttributable::ClearAttributes, "Deletes the list.")
      .def("DetachAttributes", &TAttributable::DetachAttributes,
           py::return_value_policy::take_ownership, "Hands the list, or None, to the caller.")
      .def("SetAttributes", &TAttributable::SetAttributes, arg("attributes"),
           "Makes the list a copy of `attributes`.")
      .def(
          "QueryAttributes",
          [](TAttributable& self) { return TAttributes(*self.QueryAttributes()); },
          "A copy of the list; an empty one is made if there is none.")
      .def(
          "SetAttribute",
          [](TAttributable& self, const std::string& name, const py::object& value) {
            return self.SetAttribute(name, VariantOf(value));
          },
          arg("name"), arg("value").none(true), "Makes the list if needed and stores a value.")
      .def(
          "FindAttribute",
          [](const TAttributable& self, const std::string& name) {
            return Copied(self.FindAttribute(name.c_str()));
          },
          arg("name"), found)
      .def(
          "FindAttributeE",
          [](const TAttributable& self, const std::string& name) {
            return Copied(self.FindAttributeE(name.c_str()));
          },
          arg("name"), "The same; raises `TZxMessage` where there is none.")
      .def(
          "RemoveAttribute",
          [](TAttributable& self, const std::string& name) {
            return self.RemoveAttribute(name.c_str());
          },
          arg("name"), Doc("TAttributable::RemoveAttribute"));

  py::class_<TZxNamed>(m, "TZxNamed", Doc("TZxNamed"))
      .def(py::init<>(), "The empty name.")
      .def(
          "SetName", [](TZxNamed& self, const std::string& name) { return self.SetName(name); },
          arg("name"), "Takes up to 31 bytes of UTF-8; False, with the old name kept, for more.")
      .def(
          "GetName",
          [](const TZxNamed& self) {
            return py::bytes(self.GetName()).attr("decode")("utf-8", "surrogateescape");
          },
          "The name.")
      .def(
          "IsName",
          [](const TZxNamed& self, const std::string& name) { return self.IsName(name.c_str()); },
          arg("name"), "Compares exactly.")
      .def("Swap", &TZxNamed::Swap, arg("other"), "Exchanges two names.");
}

} // namespace

void BindAttributes(py::module_& m) {
  BindVariant(m);
  BindLists(m);
}

} // namespace zxpy
