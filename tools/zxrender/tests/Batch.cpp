#include <chrono>
#include <fstream>
#include <iterator>
#include <map>

#include <gtest/gtest.h>

#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QJsonObject>

#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/TDataSurface.h>

#include "Files.h"
#include "Gltf.h"
#include "Run.h"

namespace {

std::string ReadFile(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

// The objects of the lines of a text that are JSON.
std::vector<QJsonObject> Objects(const std::string& text) {
  std::vector<QJsonObject> objects;
  for (std::size_t at = 0; at < text.size();) {
    const std::size_t end = std::min(text.find('\n', at), text.size());
    const QByteArray line(text.data() + at, static_cast<int>(end - at));
    if (const QJsonDocument document = QJsonDocument::fromJson(line); document.isObject()) {
      objects.push_back(document.object());
    }
    at = end + 1;
  }
  return objects;
}

std::string Text(const QJsonObject& object, const char* name) {
  return object[QLatin1String(name)].toString().toStdString();
}

// A square of its own for each model, so that no two pictures are alike.
std::string WriteModel(const TDirectory& directory, const std::string& name, int corner) {
  return directory.Write(name, "v -1 -1 0\nv 1 -1 0\nv 1 " + std::to_string(corner) +
                                   " 0\nv -1 1 0\nf 1 2 3 4\n");
}

TEST(Batch, OneBadFileDoesNotStopTheOthers) {
  const TDirectory directory;
  const std::string a = WriteModel(directory, "a.obj", 1);
  const std::string bad = directory.Write("bad.dae", "<COLLADA");
  const std::string b = WriteModel(directory, "b.obj", 2);
  const std::string missing = directory / "missing.obj";
  const TResult result = Render("-s 20x20 -o '" + (directory / "{name}_{n}.png") + "' " + a + " " +
                                bad + " " + missing + " " + b);
  EXPECT_EQ(result.Code, 1);
  EXPECT_EQ(std::count(result.Text.begin(), result.Text.end(), '\n'), 2);
  EXPECT_TRUE(Contains(result, "zxrender: " + bad + ": "));
  EXPECT_TRUE(Contains(result, "zxrender: " + missing + ": No such file or directory\n"));
  EXPECT_TRUE(std::filesystem::exists(directory / "a_000.png"));
  EXPECT_TRUE(std::filesystem::exists(directory / "b_003.png"));
}

TEST(Batch, ListsAndPartsDrawTheSameAsOneCall) {
  const TDirectory directory;
  std::string list = "# models\n\n";
  for (int i = 0; i < 7; ++i) {
    list += WriteModel(directory, std::string("m") + std::to_string(i) + ".obj", i + 1) + "\n";
  }
  const std::string file = directory.Write("list", list);
  for (const char* name : {"all", "parts", "piped"}) {
    std::filesystem::create_directory(directory / name);
  }
  ASSERT_EQ(
      Render("-s 20x20 -j 3 --list " + file + " -o '" + (directory / "all/{name}_{n}.png") + "'")
          .Code,
      0);
  for (const char* part : {"1/3", "2/3", "3/3"}) {
    ASSERT_EQ(Render("-s 20x20 --list " + file + " --part " + part + " -o '" +
                     (directory / "parts/{name}_{n}.png") + "'")
                  .Code,
              0);
  }
  ASSERT_EQ(RunShell("cat " + file + " | " ZX_RENDER_PROGRAM " -s 20x20 -j 1 --list - -o '" +
                     (directory / "piped/{name}_{n}.png") + "'")
                .Code,
            0);
  std::map<std::string, int> pictures;
  for (int i = 0; i < 7; ++i) {
    const std::string name = "/m" + std::to_string(i) + "_00" + std::to_string(i) + ".png";
    const std::string picture = ReadFile(directory / ("all" + name));
    ASSERT_FALSE(picture.empty()) << name;
    EXPECT_EQ(ReadFile(directory / ("parts" + name)), picture);
    EXPECT_EQ(ReadFile(directory / ("piped" + name)), picture);
    ++pictures[picture];
  }
  EXPECT_EQ(pictures.size(), 7u);
}

TEST(Batch, ATurntableSharedByJobsIsTheSame) {
  const TDirectory directory;
  const std::string model = WriteModel(directory, "m.obj", 2);
  const std::string rest = " -t 5 -s 30x20 " + model;
  ASSERT_EQ(Render("-j 1 -o " + (directory / "one.png") + rest).Code, 0);
  ASSERT_EQ(Render("-j 3 -o " + (directory / "three.png") + rest).Code, 0);
  ASSERT_EQ(Render("--part 2/2 -o " + (directory / "part.png") + rest).Code, 0);
  for (int i = 0; i < 5; ++i) {
    const std::string ending = "_00" + std::to_string(i) + ".png";
    const std::string picture = ReadFile(directory / ("one" + ending));
    ASSERT_FALSE(picture.empty());
    EXPECT_EQ(ReadFile(directory / ("three" + ending)), picture);
    // Floor of 5 / 2: the second part begins with frame 2.
    EXPECT_EQ(ReadFile(directory / ("part" + ending)), i < 2 ? "" : picture);
  }
}

TEST(Batch, JsonHasALineForEachPictureInOrder) {
  const TDirectory directory;
  const std::string a = WriteModel(directory, "a.obj", 1);
  const std::string bad = directory.Write("bad.dae", "<COLLADA");
  const std::string b = WriteModel(directory, "b.obj", 2);
  const TResult result =
      Render("--json --samples 4 -t 2 -j 4 -s 20x10 -o '" + (directory / "{name}.png") + "' " + a +
             " " + bad + " " + b + " 2>/dev/null");
  EXPECT_EQ(result.Code, 1);
  const std::vector<QJsonObject> lines = Objects(result.Text);
  ASSERT_EQ(lines.size(), 6u);
  const std::string files[] = {a, a, bad, bad, b, b};
  for (std::size_t i = 0; i < 6; ++i) {
    EXPECT_EQ(Text(lines[i], "file"), files[i]);
    EXPECT_EQ(lines[i]["number"].toInt(-1), static_cast<int>(i));
    EXPECT_EQ(lines[i]["frame"].toInt(-1), static_cast<int>(i % 2));
    const bool drawn = i / 2 != 1;
    EXPECT_EQ(Text(lines[i], "status"), drawn ? "drawn" : "refused");
    EXPECT_EQ(lines[i].contains("reason"), !drawn);
    if (!drawn) {
      continue;
    }
    EXPECT_EQ(lines[i]["triangles"].toInt(), 2);
    EXPECT_EQ(lines[i]["vertices"].toInt(), 4);
    EXPECT_EQ(lines[i]["width"].toInt(), 20);
    EXPECT_EQ(lines[i]["height"].toInt(), 10);
    EXPECT_EQ(lines[i]["samples"].toInt(), 4);
    EXPECT_GT(lines[i]["covered"].toInt(), 0);
    EXPECT_LE(lines[i]["covered"].toInt(), 200);
    for (const char* step : {"load", "draw", "save"}) {
      EXPECT_TRUE(lines[i]["seconds"].toObject()[QLatin1String(step)].isDouble());
    }
    // The digest is that of the file.
    const TResult hashed = Render("--digest " + Text(lines[i], "picture"));
    EXPECT_EQ(hashed.Text, Text(lines[i], "digest") + "  " + Text(lines[i], "picture") + "\n");
  }
}

TEST(Batch, IdsAreListedWithTheirMeshes) {
  const TDirectory directory;
  const std::string model = directory.Write("two.gltf", GltfOf({{1, 0, 0, 0}, {0.5, 0, 0, 1}}));
  const TResult result =
      Render("--json -c 0,0 -s 50x50 --ids " + (directory / "i.png") + " --depth " +
             (directory / "d.png") + " -o " + (directory / "p.png") + " " + model);
  ASSERT_EQ(result.Code, 0) << result.Text;
  const QJsonObject line = Objects(result.Text).at(0);
  const QJsonArray meshes = line["meshes"].toArray();
  ASSERT_EQ(meshes.size(), 2);
  EXPECT_EQ(Text(meshes[0].toObject(), "color"), "#800000");
  EXPECT_EQ(Text(meshes[1].toObject(), "color"), "#008000");
  EXPECT_EQ(Text(meshes[1].toObject(), "name"), "square1");
  EXPECT_EQ(meshes[1].toObject()["triangles"].toInt(), 2);
  DATASURFACE record = {};
  ASSERT_TRUE(LoadImage(directory / "i.png", nullptr, &record));
  TDataSurface ids;
  ids.Adopt(record);
  const std::uint8_t* middle = ids.Data + 25 * ids.RowStride + 25 * ids.PixelStride;
  EXPECT_EQ(middle[0], 0);
  EXPECT_EQ(middle[1], 128);
  // The whole width of 2 and its margin fill 35 degrees from some 6.7 units away.
  ASSERT_TRUE(LoadImage(directory / "d.png", nullptr, &record));
  TDataSurface depth;
  depth.Adopt(record);
  ASSERT_EQ(depth.Type, DATA_TYPE_UINT16);
  const auto* row = reinterpret_cast<const std::uint16_t*>(depth.Data + 25 * depth.RowStride);
  const double units = row[25] * line["depthStep"].toDouble();
  EXPECT_GT(units, 2);
  EXPECT_LT(units, 4);
  EXPECT_EQ(row[0], 0);
}

// A FIFO that nobody writes to: reading it never ends.
TEST(Batch, TimeoutGivesUpAFileAndDrawsTheNext) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 1);
  const auto begin = std::chrono::steady_clock::now();
  const TResult result =
      RunShell("mkfifo " + (directory / "endless.obj") +
               "; " ZX_RENDER_PROGRAM " --json --timeout 0.5 -j 1 -s 9x9 -o '" +
               (directory / "{name}.png") + "' " + (directory / "endless.obj") + " " + square);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(20));
  EXPECT_EQ(result.Code, 1);
  const std::vector<QJsonObject> lines = Objects(result.Text);
  ASSERT_EQ(lines.size(), 2u) << result.Text;
  EXPECT_EQ(Text(lines[0], "status"), "timeout");
  EXPECT_EQ(Text(lines[1], "status"), "drawn");
  EXPECT_TRUE(Contains(result, "endless.obj: given up: it takes longer than --timeout allows"));
}

// The process that reads a file is ended from outside, as by a crash.
TEST(Batch, ACrashIsToldAndTheNextFileDrawn) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 1);
  const TResult result = RunShell(
      "mkfifo " + (directory / "stuck.obj") + "; " ZX_RENDER_PROGRAM " --json -j 1 -s 9x9 -o '" +
      (directory / "{name}.png") + "' " + (directory / "stuck.obj") + " " + square +
      " & parent=$!; child=; while [ -z \"$child\" ]; do "
      "read -r child </proc/$parent/task/$parent/children || sleep 0.05; done; "
      "kill -KILL $child; wait $parent");
  EXPECT_EQ(result.Code, 1) << result.Text;
  const std::vector<QJsonObject> lines = Objects(result.Text);
  ASSERT_EQ(lines.size(), 2u) << result.Text;
  EXPECT_EQ(Text(lines[0], "status"), "crashed");
  EXPECT_TRUE(Contains(result, "stuck.obj: the process that read it ended by Killed"));
  EXPECT_EQ(Text(lines[1], "status"), "drawn");
}

#if !defined(__SANITIZE_ADDRESS__)
TEST(Batch, MemoryOfAProcessIsLimited) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 1);
  // 8000 by 8000 pixels take 9 bytes each.
  const std::string rest = " -s 8000x8000 -o " + (directory / "a.png") + " " + square;
  const TResult result = Render("--json --memory 400M" + rest);
  EXPECT_EQ(result.Code, 1);
  const std::vector<QJsonObject> lines = Objects(result.Text);
  ASSERT_EQ(lines.size(), 1u);
  EXPECT_EQ(Text(lines[0], "status"), "memory");
  EXPECT_TRUE(Contains(result, "(400 MiB)"));
  EXPECT_FALSE(std::filesystem::exists(directory / "a.png"));
}
#endif

TEST(Pipes, ModelAndPictureGoThrough) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 3);
  const std::string file = directory / "file.png";
  ASSERT_EQ(Render("-s 30x20 -o " + file + " " + square).Code, 0);
  const TResult piped =
      RunShell("cat " + square + " | " ZX_RENDER_PROGRAM " -s 30x20 --format obj - -o - | cat");
  EXPECT_EQ(piped.Text, ReadFile(file));
  // A model from standard input goes to standard output by itself.
  EXPECT_EQ(RunShell(ZX_RENDER_PROGRAM " -s 30x20 --format .obj - <" + square + " | cat").Text,
            piped.Text);
  const TResult jpeg = RunShell(ZX_RENDER_PROGRAM " --format jpg " + square + " -s 9x9 -o - | cat");
  EXPECT_EQ(jpeg.Text.substr(0, 3), "\xFF\xD8\xFF");
  // Binary glTF is known by its first bytes.
  EXPECT_EQ(RunShell(ZX_RENDER_PROGRAM " - -o " + (directory / "g.png") +
                     " -s 9x9 </usr/share/assimp/models/glTF2/BoxTextured-glTF-Binary/"
                     "BoxTextured.glb")
                .Code,
            0);
  const TResult empty =
      RunShell(ZX_RENDER_PROGRAM " - -o " + (directory / "e.png") + " </dev/null");
  EXPECT_EQ(empty.Code, 1);
  EXPECT_EQ(empty.Text, "zxrender: -: is empty\n");
}

TEST(Pipes, ClosedDescriptorsAreToldAndHarmNothing) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 3);
  const std::string rest = " -s 9x9 -o " + (directory / "a.png") + " " + square;
  EXPECT_EQ(RunShell(std::string(ZX_RENDER_PROGRAM) + rest + " <&- >&-").Code, 0);
  EXPECT_TRUE(std::filesystem::exists(directory / "a.png"));
  const TResult json = RunShell(ZX_RENDER_PROGRAM " --json" + rest + " >&-");
  EXPECT_EQ(json.Code, 1);
  EXPECT_EQ(json.Text, "zxrender: standard output can't be written to\n");
  const TResult input = RunShell(ZX_RENDER_PROGRAM " - -o " + (directory / "b.png") + " <&-");
  EXPECT_EQ(input.Code, 1);
  EXPECT_EQ(input.Text, "zxrender: standard input: Bad file descriptor\n");
  EXPECT_EQ(RunShell(std::string(ZX_RENDER_PROGRAM) + rest + " 2>&-").Code, 0);
}

TEST(Pipes, AReaderThatGoesIsAnError) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 3);
  const TResult result = RunShell("{ " ZX_RENDER_PROGRAM " " + square +
                                  " -s 400x400 -o -; echo status $? >&2; } | sleep 0");
  EXPECT_TRUE(Contains(result, "standard output: can't be written: Broken pipe")) << result.Text;
  EXPECT_TRUE(Contains(result, "status 1"));
}

TEST(Check, SameAndDifferent) {
  const TDirectory directory;
  const std::string square = WriteModel(directory, "a.obj", 1);
  const std::string before = directory / "before.png";
  ASSERT_EQ(Render("-s 40x40 -c 0,0 -o " + before + " " + square).Code, 0);
  const TResult same = Render("-s 40x40 -c 0,0 --check " + before + " " + square);
  EXPECT_EQ(same.Code, 0);
  EXPECT_EQ(same.Text, before + ": same\n");
  // Nothing but the comparison was asked for.
  EXPECT_FALSE(std::filesystem::exists("a.png"));
  const TResult other = Render("-s 40x40 -c 0,0 -b '#dbe0eb' --json --check " + before +
                               " --difference " + (directory / "d.png") + " " + square);
  EXPECT_EQ(other.Code, 3);
  const QJsonObject line = Objects(other.Text).at(0);
  EXPECT_EQ(Text(line, "status"), "different");
  const QJsonObject check = line["check"].toObject();
  // The background alone is another, by 3 in blue.
  EXPECT_EQ(check["differing"].toInt(), 1600 - line["covered"].toInt());
  EXPECT_EQ(check["greatest"].toInt(), 3);
  DATASURFACE record = {};
  ASSERT_TRUE(LoadImage(directory / "d.png", nullptr, &record));
  TDataSurface apart;
  apart.Adopt(record);
  EXPECT_EQ(apart.Data[0] + apart.Data[1], 0);
  EXPECT_EQ(apart.Data[2], 255);
  EXPECT_EQ(Render("-s 40x40 -c 0,0 -b '#dbe0eb' --check " + before + " " + square).Text,
            before + ": " + std::to_string(check["differing"].toInt()) +
                " of 1600 pixels differ, by 3 of 255 at most\n");
  const TResult size = Render("-s 40x41 -c 0,0 --check " + before + " " + square);
  EXPECT_EQ(size.Code, 3);
  EXPECT_EQ(size.Text, before + ": is of 40x40 pixels, not of 40x41\n");
  const TResult none = Render("--check " + (directory / "none.png") + " " + square);
  EXPECT_EQ(none.Code, 1);
  EXPECT_EQ(none.Text, "zxrender: " + (directory / "none.png") + ": No such file or directory\n");
  const TResult text = Render("--check " + directory.Write("text.png", "text") + " " + square);
  EXPECT_EQ(text.Code, 1);
  EXPECT_EQ(text.Text, "zxrender: " + (directory / "text.png") + ": of no known image kind\n");
}

TEST(Check, ManyPicturesByAPattern) {
  const TDirectory directory;
  const std::string a = WriteModel(directory, "a.obj", 1);
  const std::string b = WriteModel(directory, "b.obj", 2);
  const std::string models = " -t 2 -s 20x20 " + a + " " + b;
  ASSERT_EQ(Render("-o '" + (directory / "{name}.png") + "'" + models).Code, 0);
  const TResult same = Render("--check '" + (directory / "{name}.png") + "'" + models);
  EXPECT_EQ(same.Code, 0);
  EXPECT_EQ(std::count(same.Text.begin(), same.Text.end(), '\n'), 4);
  std::filesystem::copy_file(directory / "a_000.png", directory / "b_001.png",
                             std::filesystem::copy_options::overwrite_existing);
  const TResult changed = Render("--check '" + (directory / "{name}.png") + "'" + models);
  EXPECT_EQ(changed.Code, 3);
  EXPECT_TRUE(Contains(changed, "b_000.png: same\n"));
  EXPECT_TRUE(Contains(changed, "pixels differ"));
}

TEST(Check, PicturesAreTakenAsTheyAre) {
  const TDirectory directory;
  const std::string a = WriteModel(directory, "a.obj", 1);
  const std::string p = directory / "p.png";
  const std::string q = directory / "q.png";
  ASSERT_EQ(Render("-s 20x20 -o " + p + " " + a).Code, 0);
  ASSERT_EQ(Render("-s 20x20 -b black -o " + q + " " + a).Code, 0);
  EXPECT_EQ(Render("--check " + p + " " + p).Code, 0);
  EXPECT_EQ(Render("--check " + p + " " + q).Code, 3);
  const TResult drawn = Render("-s 20x20 --digest " + a);
  EXPECT_EQ(drawn.Text.substr(0, 64), Render("--digest " + p).Text.substr(0, 64));
  EXPECT_EQ(drawn.Text.substr(64), "  a.png\n");
  EXPECT_NE(Render("--digest " + q).Text.substr(0, 64), drawn.Text.substr(0, 64));
  EXPECT_EQ(Render(p).Code, 1);
}

} // namespace
