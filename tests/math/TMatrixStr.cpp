#include <ZxCore3D/math/TMatrixStr.h>

#include <gtest/gtest.h>

namespace {

TVectorStr Vector(std::initializer_list<std::string> texts) {
  TVectorStr v(texts.size());
  v.Data.assign(texts);
  return v;
}

TMatrixStr Matrix(unsigned long sizeX, unsigned long sizeY,
                  std::initializer_list<std::string> texts) {
  TMatrixStr m(sizeX, sizeY);
  m.Data.assign(texts);
  return m;
}

using Texts = std::vector<std::string>;

TEST(TMatrixStr, Construction) {
  EXPECT_TRUE(TVectorStr().Data.empty());
  EXPECT_EQ(TVectorStr().Size, 0u);
  EXPECT_TRUE(TMatrixStr().Data.empty());
  EXPECT_EQ(TMatrixStr().SizeX, 0u);
  EXPECT_EQ(TMatrixStr().SizeY, 0u);
  const TVectorStr v(2);
  EXPECT_EQ(v.Size, 2u);
  EXPECT_EQ(v.Data, Texts({"", ""}));
  const TMatrixStr m(3, 2);
  EXPECT_EQ(m.SizeX, 3u);
  EXPECT_EQ(m.SizeY, 2u);
  EXPECT_EQ(m.Data, Texts(6));
  static_assert(sizeof(TVectorStr) == sizeof(Texts) + 8);
  static_assert(sizeof(TMatrixStr) == sizeof(Texts) + 16);
}

TEST(TMatrixStr, ElementsByRowThenColumn) {
  TMatrixStr m = Matrix(3, 2, {"a", "b", "c", "d", "e", "f"});
  EXPECT_EQ(m(1, 0), "d");
  m(0, 2) = "z";
  EXPECT_EQ(m.Data[2], "z");
  const TMatrixStr& constant = m;
  EXPECT_EQ(constant(1, 2), "f");
  TVectorStr v = Vector({"a", "b"});
  v(1) = "q";
  const TVectorStr& constantVector = v;
  EXPECT_EQ(constantVector(1), "q");
}

TEST(TMatrixStr, Fill) {
  TVectorStr v = Vector({"a", "b"});
  fill(v, v(1));
  EXPECT_EQ(v.Data, Texts({"b", "b"}));
  TMatrixStr m(2, 1);
  fill(m, "x");
  EXPECT_EQ(m.Data, Texts({"x", "x"}));
}

TEST(TMatrixStr, ProductWithText) {
  TVectorStr v = Vector({"a + b", ""});
  TVectorStr res(2);
  mul(v, "c", &res);
  EXPECT_EQ(res.Data, Texts({"a + b * c", " * c"}));
  mul(v, "c", &v);
  EXPECT_EQ(v.Data, Texts({"a + b * c", " * c"}));
  TVectorStr own = Vector({"a", "b"});
  mul(own, own(0), &own);
  EXPECT_EQ(own.Data, Texts({"a * a", "b * a"}));
}

TEST(TMatrixStr, RowsAndColumns) {
  const TMatrixStr m = Matrix(3, 2, {"a", "b", "c", "d", "e", "f"});
  TVectorStr two(2), three(3);
  col(m, 1, &two);
  EXPECT_EQ(two.Data, Texts({"b", "e"}));
  row(m, 1, &three);
  EXPECT_EQ(three.Data, Texts({"d", "e", "f"}));
}

TEST(TMatrixStr, Dot) {
  EXPECT_EQ(dot(Vector({"a", "b"}), Vector({"c", "d"})), "a * c + b * d");
  EXPECT_EQ(dot(TVectorStr(0), Vector({"c"})), "");
  EXPECT_EQ(dot(Vector({""}), Vector({""})), " * ");
  EXPECT_EQ(dot(Vector({"0", "", "2"}), Vector({"x", "y", ""})), "0 * x +  * y + 2 * ");
}

TEST(TMatrixStr, ProductWithVector) {
  TVectorStr res(2);
  mul(Matrix(2, 2, {"a", "b", "c", "d"}), Vector({"x", "y"}), &res);
  EXPECT_EQ(res.Data, Texts({"a * x + b * y", "c * x + d * y"}));
}

TEST(TMatrixStr, ProductOfMatrices) {
  TMatrixStr res(2, 2);
  mul(Matrix(2, 2, {"a", "b", "c", "d"}), Matrix(2, 2, {"e", "f", "g", "h"}), &res);
  EXPECT_EQ(res.Data, Texts({"a * e + b * g", "a * f + b * h", "c * e + d * g", "c * f + d * h"}));
  // The columns of the result are counted by the left matrix, also where the right one has more.
  TMatrixStr one = Matrix(2, 1, {"", "old"});
  mul(Matrix(1, 1, {"a"}), Matrix(2, 1, {"e", "f"}), &one);
  EXPECT_EQ(one.Data, Texts({"a * e", "old"}));
}

TEST(TMatrixStr, OuterProduct) {
  TMatrixStr res(3, 2);
  outer_dot(Vector({"a", "b"}), Vector({"x", "y", "z"}), &res);
  EXPECT_EQ(res.Data, Texts({"a * x", "a * y", "a * z", "b * x", "b * y", "b * z"}));
}

TEST(TMatrixStr, ShapesThatDoNotFitAreLeftAlone) {
  TVectorStr res = Vector({"old"});
  const TMatrixStr m = Matrix(2, 2, {"a", "b", "c", "d"});
  mul(Vector({"a", "b"}), "c", &res);
  col(m, 0, &res);
  row(m, 0, &res);
  mul(m, Vector({"x", "y"}), &res);
  TVectorStr two = Vector({"p", "q"});
  col(m, 2, &two);
  row(m, 2, &two);
  mul(m, Vector({"x"}), &two);
  EXPECT_EQ(two.Data, Texts({"p", "q"}));
  EXPECT_EQ(res.Data, Texts({"old"}));
  TMatrixStr small = Matrix(1, 1, {"old"});
  mul(m, m, &small);
  outer_dot(two, two, &small);
  EXPECT_EQ(small.Data, Texts({"old"}));
  EXPECT_EQ(dot(two, res), "");
}

} // namespace
