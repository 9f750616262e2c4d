#include <ZxCore3D/math/GeometryXIni.h>

#include <bit>
#include <cstdint>
#include <limits>
#include <string>

#include <gtest/gtest.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxXIniReader.h>
#include <ZxBaseKit/TZxXIniWriter.h>

namespace {

using TPoint2 = vec_t_<double, 2>;
using TPoint3 = vec_t_<double, 3>;

template <class T> std::string TextOf(const T& value) {
  TZxXIniWriter writer;
  XIniSaveE(&writer, value);
  return writer.GetText();
}

template <class T> void Load(const std::string& text, T* value) {
  TZxXIniReader reader(text);
  XIniLoadE(&reader, *value);
}

double Item(const TZxXIniReader& reader, const char* key) {
  return reader.ReadE<double>(reader.FindFE(key, 0));
}

MAT4<double> Counting() {
  MAT4<double> m;
  for (std::size_t i = 0; i < 16; ++i) {
    m[i] = static_cast<double>(i);
  }
  return m;
}

TEST(GeometryXIni, MatrixKeysAreRowAndColumn) {
  const TZxXIniReader reader(TextOf(Counting()));
  EXPECT_EQ(reader.GetCount(), 16u);
  EXPECT_EQ(Item(reader, "m00"), 0);
  EXPECT_EQ(Item(reader, "m01"), 4);
  EXPECT_EQ(Item(reader, "m10"), 1);
  EXPECT_EQ(Item(reader, "m03"), 12);
  EXPECT_EQ(Item(reader, "m30"), 3);
  EXPECT_EQ(Item(reader, "m23"), 14);
  EXPECT_EQ(Item(reader, "m33"), 15);
}

TEST(GeometryXIni, MatrixComesBack) {
  MAT4<double> translation = g_M4Ed;
  translation[12] = 0.1;
  translation[13] = -0.0;
  translation[14] = std::numeric_limits<double>::infinity();
  for (const MAT4<double>& m : {g_M4Ed, translation, Counting()}) {
    MAT4<double> back = {};
    Load(TextOf(m), &back);
    for (std::size_t i = 0; i < 16; ++i) {
      EXPECT_EQ(std::bit_cast<std::uint64_t>(back[i]), std::bit_cast<std::uint64_t>(m[i])) << i;
    }
  }
  EXPECT_EQ(Item(TZxXIniReader(TextOf(translation)), "m03"), 0.1);
}

TEST(GeometryXIni, MatrixIsFilledUpToAMissingKey) {
  std::string text = TextOf(Counting());
  text.erase(text.find("m12"), text.find("m13") - text.find("m12"));
  MAT4<double> m;
  for (std::size_t i = 0; i < 16; ++i) {
    m[i] = -1;
  }
  EXPECT_THROW(Load(text, &m), TZxMessage);
  EXPECT_EQ(m[0], 0);
  EXPECT_EQ(m[12], 12); // m03
  EXPECT_EQ(m[5], 5);   // m11
  EXPECT_EQ(m[9], -1);  // m12
  EXPECT_EQ(m[13], -1); // m13
}

TEST(GeometryXIni, AFailedWriteRaises) {
  TZxXIniWriter writer;
  XIniSaveE(&writer, g_M4Ed);
  // The keys stand there already.
  EXPECT_THROW(XIniSaveE(&writer, g_M4Ed), TZxMessage);
  XIniSaveE(&writer, VBOX<double>({1, 2, 3}, {4, 5, 6}));
  EXPECT_THROW(XIniSaveE(&writer, VRECT<double>({1, 2}, {4, 5})), TZxMessage);
}

/// A writer whose error the host has made its own.
struct TOwnWriter : TZxXIniWriter {
  struct TError {};
  void RaiseErrorE() const override { throw TError(); }
};

TEST(GeometryXIni, AFailedWriteGoesToTheWritersOwnOperation) {
  TOwnWriter writer;
  const double value = 1;
  ASSERT_TRUE(writer.WriteS<double>("m31", &value));
  EXPECT_THROW(XIniSaveE(&writer, g_M4Ed), TOwnWriter::TError);
}

TEST(GeometryXIni, BoundsAreCompactSections) {
  EXPECT_EQ(TextOf(VBOX<double>({1, 2, 3}, {4, 5, 6})),
            "max = { x = 4.0, y = 5.0, z = 6.0 }\nmin = { x = 1.0, y = 2.0, z = 3.0 }\n");
  EXPECT_EQ(TextOf(VRECT<double>({1, 2}, {4, 5})),
            "max = { x = 4.0, y = 5.0 }\nmin = { x = 1.0, y = 2.0 }\n");
}

TEST(GeometryXIni, SaveSEWritesAPoint) {
  TZxXIniWriter writer;
  TPoint3{0.5, -0.0, 3}.SaveSE(&writer, "eye");
  const double value = 1;
  ASSERT_TRUE(writer.WriteS<double>("after", &value)); // the section is closed
  EXPECT_EQ(writer.GetText(), "after = 1.0\neye = { x = 0.5, y = -0.0, z = 3.0 }\n");
  EXPECT_THROW((TPoint3{1, 2, 3}.SaveSE(&writer, "eye")), TZxMessage);
}

TEST(GeometryXIni, BoundsAreSavedInOrder) {
  EXPECT_EQ(TextOf(VBOX<double>({4, 2, 6}, {1, 5, 3})), TextOf(VBOX<double>({1, 2, 3}, {4, 5, 6})));
  EXPECT_EQ(TextOf(VRECT<double>({4, 2}, {1, 5})), TextOf(VRECT<double>({1, 2}, {4, 5})));
}

TEST(GeometryXIni, BoundsComeBack) {
  VBOX<double> box;
  box.Flag = true;
  Load(TextOf(VBOX<double>({1, 2, 3}, {4, 5, 6})), &box);
  EXPECT_EQ(box.Min, (TPoint3{1, 2, 3}));
  EXPECT_EQ(box.Max, (TPoint3{4, 5, 6}));
  EXPECT_TRUE(box.Flag);
  VRECT<double> rect;
  Load(TextOf(VRECT<double>({1, 2}, {4, 5})), &rect);
  EXPECT_EQ(rect.Min, (TPoint2{1, 2}));
  EXPECT_EQ(rect.Max, (TPoint2{4, 5}));
  EXPECT_FALSE(rect.Flag);
}

TEST(GeometryXIni, BoundsAreLoadedInOrder) {
  VBOX<double> box;
  Load("min = { x = 4, y = 2, z = 3 }\nmax = { x = 1, y = 5, z = 3 }\n", &box);
  EXPECT_EQ(box.Min, (TPoint3{1, 2, 3}));
  EXPECT_EQ(box.Max, (TPoint3{4, 5, 3}));
  VRECT<double> rect;
  Load("[max]\nx = 4\ny = 2\n[min]\ny = 5\nx = 1\n", &rect);
  EXPECT_EQ(rect.Min, (TPoint2{1, 2}));
  EXPECT_EQ(rect.Max, (TPoint2{4, 5}));
}

TEST(GeometryXIni, TheMarkerMakesBoundsEmptyAndLeavesTheRest) {
  const std::string corners = "min = { x = 7, y = 8, z = 9 }\nmax = { x = 7, y = 8, z = 9 }\n";
  for (const std::string& text :
       {std::string("empty = 1\n"), "empty = false\n" + corners, corners + "[empty]\n"}) {
    VBOX<double> box({1, 2, 3}, {4, 5, 6});
    box.Flag = true;
    Load(text, &box);
    EXPECT_TRUE(box.IsEmpty());
    EXPECT_EQ(box.Min.y, 2);
    EXPECT_EQ(box.Max, (TPoint3{4, 5, 6}));
    EXPECT_TRUE(box.Flag);
    VRECT<double> rect({1, 2}, {4, 5});
    Load(text, &rect);
    EXPECT_TRUE(rect.IsEmpty());
    EXPECT_EQ(rect.Min.y, 2);
    EXPECT_EQ(rect.Max, (TPoint2{4, 5}));
  }
}

TEST(GeometryXIni, EmptyBoundsAreSavedWithoutAMarker) {
  VBOX<double> box({1, 2, 3}, {4, 5, 6});
  box.SetEmpty();
  EXPECT_EQ(TextOf(box), "max = { x = 4.0, y = 5.0, z = 6.0 }\n"
                         "min = { x = \"0xffffffffffffffff\", y = 2.0, z = 3.0 }\n");
  VRECT<double> rect({1, 2}, {4, 5});
  rect.SetEmpty();
  EXPECT_EQ(TextOf(rect), "max = { x = 4.0, y = 5.0 }\n"
                          "min = { x = \"0xffffffffffffffff\", y = 2.0 }\n");
}

TEST(GeometryXIni, AnEmptyFirstCornerMakesTheSecondTheWholeBox) {
  VBOX<double> saved({1, 2, 3}, {4, 5, 6});
  saved.SetEmpty();
  VBOX<double> box;
  Load(TextOf(saved), &box);
  EXPECT_EQ(box.Min, (TPoint3{4, 5, 6}));
  EXPECT_EQ(box.Max, (TPoint3{4, 5, 6}));
  VRECT<double> rect;
  Load("min = { x = '0xffffffffffffffff', y = 1 }\nmax = { x = 4, y = 5 }\n", &rect);
  EXPECT_EQ(rect.Min, (TPoint2{4, 5}));
  EXPECT_EQ(rect.Max, (TPoint2{4, 5}));
}

TEST(GeometryXIni, BoundsAreUntouchedWhenSomethingIsMissing) {
  for (const char* text :
       {"", "min = { x = 7, y = 8, z = 9 }", "max = { x = 7, y = 8, z = 9 }",
        "min = { x = 7, y = 8, z = 9 }\nmax = { x = 7, z = 9 }",
        "min = { x = 7, y = 8, z = 9 }\nmax = { x = 7, y = 'a', z = 9 }", "min = 1\nmax = 2"}) {
    VBOX<double> box({1, 2, 3}, {4, 5, 6});
    EXPECT_THROW(Load(text, &box), TZxMessage) << text;
    EXPECT_EQ(box.Min, (TPoint3{1, 2, 3}));
    EXPECT_EQ(box.Max, (TPoint3{4, 5, 6}));
    VRECT<double> rect({1, 2}, {4, 5});
    EXPECT_THROW(Load(text, &rect), TZxMessage) << text;
    EXPECT_EQ(rect.Min, (TPoint2{1, 2}));
    EXPECT_EQ(rect.Max, (TPoint2{4, 5}));
  }
  // A box asks for z, a rectangle does not.
  const std::string flat = "min = { x = 7, y = 8 }\nmax = { x = 7, y = 8 }";
  VBOX<double> box;
  EXPECT_THROW(Load(flat, &box), TZxMessage);
  VRECT<double> rect;
  EXPECT_NO_THROW(Load(flat, &rect));
}

TEST(GeometryXIni, LoadingLeavesTheReaderWhereItWas) {
  TZxXIniReader reader("[box]\nmin = { x = 1, y = 2, z = 3 }\nmax = { x = 4, y = 5, z = 6 }\n");
  const unsigned long token = reader.BeginSectionE(0);
  VBOX<double> box;
  XIniLoadE(&reader, box);
  EXPECT_EQ(reader.GetKeyE(0), "min");
  reader.EndSectionE(token);
  EXPECT_EQ(reader.GetKeyE(0), "box");
}

} // namespace
