#include "Common.h"
#include "Matrices.h"

namespace zxpy {

namespace {

using py::arg;
using TVec3 = vec_t_<double, 3>;

// --- Points

template <std::size_t Size>
const vec_t_<double, Size>* PointsOf(const TAnyDoubles& p, py::ssize_t count, const char* name) {
  if (p.ndim() != 2 || p.shape(1) != Size || (count >= 0 && p.shape(0) != count)) {
    throw py::type_error(std::string(name) + " is an array of " +
                         (count >= 0 ? std::to_string(count) : std::string("n")) + " by " +
                         std::to_string(Size));
  }
  return reinterpret_cast<const vec_t_<double, Size>*>(p.data());
}

TDoubles Rows(const double* values, py::ssize_t rows, py::ssize_t columns) {
  TDoubles out(std::vector<py::ssize_t>{rows, columns});
  std::copy(values, values + rows * columns, out.mutable_data());
  return out;
}

std::array<double, 3> ToArray(const TVec3& v) { return {v.x, v.y, v.z}; }

TVec3 ToVec(const std::array<double, 3>& v) { return {v[0], v[1], v[2]}; }

// --- Fits

py::object Projective(const TAnyDoubles& src, const TAnyDoubles& dst) {
  if (src.ndim() != 2 || dst.ndim() != 2 || src.shape(0) != dst.shape(0) ||
      src.shape(1) != dst.shape(1)) {
    throw py::type_error("GetProjectiveTransform takes two arrays of as many points");
  }
  const auto n = static_cast<unsigned long>(src.shape(0));
  if (src.shape(1) == 2) {
    MAT3<double> m;
    return GetProjectiveTransform(PointsOf<2>(src, -1, "src"), PointsOf<2>(dst, -1, "dst"), n, &m)
               ? py::object(MatrixArray(m.m, 3))
               : py::none();
  }
  MAT4<double> m;
  return GetProjectiveTransform(PointsOf<3>(src, -1, "src"), PointsOf<3>(dst, -1, "dst"), n, &m)
             ? py::object(MatrixArray(m.m, 4))
             : py::none();
}

py::object Affine(const TAnyDoubles& src, const TAnyDoubles& dst) {
  const TVec3* const from = PointsOf<3>(src, -1, "src");
  const TVec3* const to = PointsOf<3>(dst, src.shape(0), "dst");
  MAT4<double> m;
  return GetAffineTransform(from, to, static_cast<unsigned long>(src.shape(0)), &m)
             ? py::object(MatrixArray(m.m, 4))
             : py::none();
}

void BindFits(py::module_& m) {
  m.def("GetProjectiveTransform", Projective, arg("src"), arg("dst"),
        "The least-squares projective map of the points `src` to `dst`: a matrix [row, column] of "
        "3 by 3 for points of 2 coordinates (at least 4), of 4 by 4 for 3 coordinates (at least "
        "5), whose last element is 1. None when there are too few or they lie too nearly on a line "
        "or plane.\n\nOne linear solve of the raw coordinates: nothing is centred or scaled, and "
        "coordinates of the order of 0.001 are refused.");
  m.def("GetAffineTransform", Affine, arg("src"), arg("dst"),
        "The least-squares affine map of points of 3 coordinates, as a matrix [row, column] of 4 "
        "by 4. None only when the determinant of the normal matrix is exactly 0: coplanar points "
        "usually give a meaningless matrix.");
}

// --- Triangles, polygons, lines

void BindContacts(py::module_& m) {
  m.def(
      "IsIntersectTriangles",
      [](const TAnyDoubles& a, const TAnyDoubles& b, double eps) {
        return IsIntersectTriangles(PointsOf<3>(a, 3, "a"), PointsOf<3>(b, 3, "b"), eps);
      },
      arg("a"), arg("b"), arg("eps"),
      "Whether the triangles `a` and `b`, three points each, meet. `eps` decides only when two "
      "planes count as parallel.");
  m.def(
      "GetIntersectTriangles",
      [](const TAnyDoubles& a, const TAnyDoubles& b, double eps) {
        TVec3 out[6];
        const unsigned long count =
            GetIntersectTriangles(PointsOf<3>(a, 3, "a"), PointsOf<3>(b, 3, "b"), out, eps);
        return Rows(&out[0].x, static_cast<py::ssize_t>(count), 3);
      },
      arg("a"), arg("b"), arg("eps"),
      "The common part of the triangles: no point, one point, the 2 ends of a segment, or, of "
      "coplanar triangles, the 1 to 6 vertices of a polygon.");
  m.def(
      "IsSelfIntersected",
      [](const TAnyDoubles& p) {
        return IsSelfIntersected(PointsOf<2>(p, -1, "p"), static_cast<unsigned long>(p.shape(0)));
      },
      arg("p"), "Whether the closed polygon crosses, touches or folds back on itself.");
  const auto line = [](const std::array<int, 3>& from, const std::array<int, 3>& to,
                       std::optional<int> thickness) {
    std::vector<vec_t_<int, 3>> cells;
    const vec_t_<int, 3> begin = {from[0], from[1], from[2]};
    const vec_t_<int, 3> end = {to[0], to[1], to[2]};
    if (thickness) {
      DrawLine3d(begin, end, *thickness, cells);
    } else {
      DrawLine3d(begin, end, cells);
    }
    py::array_t<int> out(std::vector<py::ssize_t>{static_cast<py::ssize_t>(cells.size()), 3});
    std::copy_n(cells.empty() ? nullptr : &cells[0].x, cells.size() * 3, out.mutable_data());
    return out;
  };
  m.def("DrawLine3d", line, arg("start"), arg("end"), arg("thickness") = py::none(),
        "The cells of the straight line from `start` to `end`, both included; with a thickness "
        "each is a block of `2 h + 1` by `2 h + 1` across the dominant axis, h being half of it.");
}

// --- Bounds

class TPyTransform : public TZx3DTransform {
public:
  TVec3 TransformPoint(const TVec3& point) const override {
    const py::function f =
        py::get_override(static_cast<const TZx3DTransform*>(this), "TransformPoint");
    if (!f) {
      throw py::type_error("the transform has no TransformPoint");
    }
    return ToVec(f(ToArray(point)).cast<std::array<double, 3>>());
  }
};

using TBox = VBOX<double>;
using TSphere = VSPHERE<double>;
using TFrustum = TFrustum_T<double>;

template <class TClass, class TPoint>
void DefPoint(py::class_<TClass>& c, const char* name, TPoint TClass::*member, const char* doc) {
  constexpr std::size_t kSize = sizeof(TPoint) / sizeof(double);
  c.def_property(
      name,
      [member](const TClass& self) {
        std::array<double, kSize> out;
        for (std::size_t i = 0; i < kSize; ++i) {
          out[i] = (self.*member)[i];
        }
        return out;
      },
      [member](TClass& self, const std::array<double, kSize>& value) {
        for (std::size_t i = 0; i < kSize; ++i) {
          (self.*member)[i] = value[i];
        }
      },
      doc);
}

template <class TBounds, std::size_t Size>
void BindExtent(py::module_& m, const char* name, const char* doc) {
  py::class_<TBounds> c(m, name, doc);
  c.def(py::init<>(), "What holds nothing: the least value above the greatest.");
  DefPoint(c, "Min", &TBounds::Min, "The least coordinates.");
  DefPoint(c, "Max", &TBounds::Max, "The greatest coordinates.");
  c.def_readwrite("Flag", &TBounds::Flag, "Carried along; nothing reads it.");
  c.def("IsEmpty", &TBounds::IsEmpty, "Whether it is marked empty.");
  c.def("SetEmpty", &TBounds::SetEmpty, "Marks it empty; the other values stay.");
  c.def(
      "Expand",
      [](TBounds& self, const std::array<double, Size>& p) {
        vec_t_<double, Size> point;
        for (std::size_t i = 0; i < Size; ++i) {
          point[i] = p[i];
        }
        self.Expand(point);
      },
      arg("p"), "Grows it to hold `p`.");
}

void BindBounds(py::module_& m) {
  py::class_<TZx3DTransform, TPyTransform>(
      m, "TZx3DTransform",
      "A map of points: derive from it and give `TransformPoint(point)`, which returns the image.")
      .def(py::init_alias<>());
  BindExtent<TBox, 3>(m, "VBOX", "An axis-aligned box.");
  BindExtent<VRECT<double>, 2>(m, "VRECT", "An axis-aligned rectangle.");
  py::class_<TSphere> sphere(m, "VSPHERE", "A sphere.");
  sphere.def(py::init([](const std::array<double, 3>& center, double radius) {
               return TSphere{ToVec(center), radius};
             }),
             arg("Center") = std::array<double, 3>{}, arg("Radius") = 0.0);
  DefPoint(sphere, "Center", &TSphere::Center, "The centre.");
  sphere.def_readwrite("Radius", &TSphere::Radius, "The radius.");
  sphere.def("IsEmpty", &TSphere::IsEmpty, "Whether it is marked empty.");
  sphere.def("SetEmpty", &TSphere::SetEmpty, "Marks it empty; the centre stays.");
}

TDoubles Planes(const TFrustum& self) { return Rows(&self.Plains[0].a, 6, 4); }

void SetPlanes(TFrustum& self, const TAnyDoubles& planes) {
  if (planes.ndim() != 2 || planes.shape(0) != 6 || planes.shape(1) != 4) {
    throw py::type_error("Plains is an array of 6 by 4");
  }
  std::copy(planes.data(), planes.data() + 24, &self.Plains[0].a);
}

void BindFrusta(py::module_& m) {
  py::class_<TFrustum>(m, "TFrustum_T", "Six planes a, b, c, d.")
      .def(py::init([] { return TFrustum{}; }))
      .def_property("Plains", Planes, SetPlanes, "The planes, as a copy of 6 by 4.")
      .def_readwrite("Flags", &TFrustum::Flags, "Bit 0x40 is set by `Transform`.")
      .def(
          "GetCone",
          [](const TFrustum& self) {
            TVec3 corners[8];
            self.GetCone(corners);
            return Rows(&corners[0].x, 8, 3);
          },
          "The eight corners.");
  m.def(
      "SetCone",
      [](TFrustum& f, const TAnyDoubles& corners) {
        SetCone(f, PointsOf<3>(corners, 8, "corners"));
      },
      arg("f"), arg("corners"), Doc("SetCone"));
  m.def(
      "CrossPlains",
      [](const std::array<double, 4>& a, const std::array<double, 4>& b,
         const std::array<double, 4>& c) -> std::optional<std::array<double, 3>> {
        const auto plane = [](const std::array<double, 4>& p) {
          return UPLAIN<double>{p[0], p[1], p[2], p[3]};
        };
        TVec3 out;
        return CrossPlains<double>(plane(a), plane(b), plane(c), &out) ? std::optional(ToArray(out))
                                                                       : std::nullopt;
      },
      arg("a"), arg("b"), arg("c"),
      "The point common to three planes a, b, c, d; None when the determinant is exactly 0.");
  m.def(
      "Transform",
      [](const TFrustum& f, const TZx3DTransform& t) {
        TFrustum out{};
        Transform(f, t, &out);
        return out;
      },
      arg("f"), arg("t"), "Maps a frustum by its eight corners.");
  m.def(
      "Transform",
      [](const TBox& b, const TZx3DTransform& t) {
        TBox out;
        Transform(b, t, &out);
        return out;
      },
      arg("b"), arg("t"), "The box around the eight mapped corners of a box.");
  m.def(
      "Transform",
      [](const TSphere& s, unsigned long steps, const TZx3DTransform& t) {
        if (steps < 8 || steps > 100000) {
          throw py::value_error("Transform: steps is 8 to 100000");
        }
        TSphere out{};
        Transform(s, steps, t, &out);
        return out;
      },
      arg("s"), arg("steps"), arg("t"), "A sphere around mapped samples of a sphere.");
}

} // namespace

void BindGeometry(py::module_& m) {
  BindFits(m);
  BindContacts(m);
  BindBounds(m);
  BindFrusta(m);
}

} // namespace zxpy
