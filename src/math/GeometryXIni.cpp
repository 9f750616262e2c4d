#include <ZxCore3D/math/GeometryXIni.h>

#include <cmath>
#include <string>

#include <ZxBaseKit/KeyStrings.h>
#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>

namespace {

constexpr const char* kAxes[3] = {zx::s_x, zx::s_y, zx::s_z};

void WriteE(TZxXIniWriter* w, const char* key, const double& value) {
  if (!w->WriteS<double>(key, &value)) {
    w->RaiseErrorE();
  }
}

double ReadE(const TZxXIniReader* r, const char* key) {
  return r->ReadE<double>(r->FindFE(key, 0));
}

template <std::size_t N>
void WritePointE(TZxXIniWriter* w, const std::string& name, const vec_t_<double, N>& p) {
  const unsigned long token = w->BeginSectionCompactSE(name);
  for (std::size_t i = 0; i < N; ++i) {
    WriteE(w, kAxes[i], p[i]);
  }
  w->EndSectionE(token);
}

template <std::size_t N> vec_t_<double, N> ReadPointE(TZxXIniReader* r, const char* name) {
  const unsigned long token = r->BeginSectionE(r->FindFE(name, 0));
  vec_t_<double, N> p;
  for (std::size_t i = 0; i < N; ++i) {
    p[i] = ReadE(r, kAxes[i]);
  }
  r->EndSectionE(token);
  return p;
}

/// Puts both corners in order. A NaN stays where it is.
template <std::size_t N> void Order(vec_t_<double, N>* min, vec_t_<double, N>* max) {
  for (std::size_t i = 0; i < N; ++i) {
    // Quiet: the mark of an empty bound is a NaN, and a host may trap invalid operations.
    if (std::isless((*max)[i], (*min)[i])) {
      const double greater = (*min)[i];
      (*min)[i] = (*max)[i];
      (*max)[i] = greater;
    }
  }
}

template <std::size_t N, class TBounds> void LoadBoundsE(TZxXIniReader* r, TBounds* b) {
  if (r->FindF(zx::s_empty, 0) != ~0ul) {
    b->SetEmpty();
    return;
  }
  const vec_t_<double, N> first = ReadPointE<N>(r, zx::s_min);
  const vec_t_<double, N> second = ReadPointE<N>(r, zx::s_max);
  b->Min = first;
  b->Max = first;
  b->Expand(second);
}

struct TMatrixKey {
  char Text[4];

  TMatrixKey(unsigned int row, unsigned int column)
      : Text{'m', static_cast<char>('0' + row), static_cast<char>('0' + column), '\0'} {}
};

} // namespace

template <> void vec_t_<double, 3>::SaveSE(TZxXIniWriter* writer, const std::string& name) const {
  WritePointE(writer, name, *this);
}

void XIniSaveE(TZxXIniWriter* w, const MAT4<double>& m) {
  for (unsigned int row = 0; row < 4; ++row) {
    for (unsigned int column = 0; column < 4; ++column) {
      WriteE(w, TMatrixKey(row, column).Text, m[column * 4 + row]);
    }
  }
}

void XIniLoadE(TZxXIniReader* r, MAT4<double>& m) {
  for (unsigned int row = 0; row < 4; ++row) {
    for (unsigned int column = 0; column < 4; ++column) {
      m[column * 4 + row] = ReadE(r, TMatrixKey(row, column).Text);
    }
  }
}

void XIniSaveE(TZxXIniWriter* w, const VRECT<double>& b) {
  VRECT<double> ordered = b;
  Order(&ordered.Min, &ordered.Max);
  WritePointE(w, zx::s_min, ordered.Min);
  WritePointE(w, zx::s_max, ordered.Max);
}

void XIniLoadE(TZxXIniReader* r, VRECT<double>& b) { LoadBoundsE<2>(r, &b); }

void XIniSaveE(TZxXIniWriter* w, const VBOX<double>& b) {
  VBOX<double> ordered = b;
  Order(&ordered.Min, &ordered.Max);
  ordered.Min.SaveSE(w, zx::s_min);
  ordered.Max.SaveSE(w, zx::s_max);
}

void XIniLoadE(TZxXIniReader* r, VBOX<double>& b) { LoadBoundsE<3>(r, &b); }
