#include <algorithm>

#include <gtest/gtest.h>

#include <ZxPixelKit/ZxPixelKit.h>

#include "Files.h"
#include "Run.h"

namespace {

TEST(Program, HelpFitsAScreenAndHasGroups) {
  const TResult help = Render("--help");
  EXPECT_EQ(help.Code, 0);
  EXPECT_LE(std::count(help.Text.begin(), help.Text.end(), '\n'), 24);
  EXPECT_EQ(Render("-h").Text, help.Text);
  const TResult all = Render("--help=all");
  for (const TResult& shown : {help, all}) {
    for (std::size_t at = 0; at < shown.Text.size();) {
      const std::size_t end = shown.Text.find('\n', at);
      EXPECT_LE(end - at, 80u) << shown.Text.substr(at, end - at);
      at = end + 1;
    }
  }
  for (const char* option :
       {"--output",     "--size",    "--samples", "--background", "--wire",    "--filter",
        "--format",     "--camera",  "--fov",     "--up",         "--light",   "--turntable",
        "--depth ",     "--normals", "--ids",     "--depth-step", "--digest",  "--check",
        "--difference", "--list",    "--jobs",    "--part",       "--timeout", "--memory",
        "--json",       "--stats",   "--help",    "--version"}) {
    EXPECT_TRUE(Contains(all, option)) << option;
  }
  EXPECT_TRUE(Contains(help, "Exit status"));
  for (const TResult& shown : {help, Render("--print-manual")}) {
    EXPECT_TRUE(Contains(shown, "[OPTION]... MODEL...\n"));
  }
  for (const char* group : {"picture", "view", "layers", "check", "many", "report"}) {
    EXPECT_TRUE(Contains(help, group)) << group;
    const TResult shown = Render(std::string("--help=") + group);
    EXPECT_EQ(shown.Code, 0);
    EXPECT_NE(all.Text.find(shown.Text), std::string::npos) << group;
  }
  EXPECT_EQ(Render("--help=everything").Code, 2);
  EXPECT_EQ(Render("--version").Text.rfind("zxrender ", 0), 0u);
}

TEST(Program, WrongCommandLines) {
  for (const char* arguments : {"",
                                "-o x.png a.obj b.obj",
                                "x/a.obj y/a.obj",
                                "-o x.gif a.obj",
                                "-o x a.obj",
                                "-o '{nme}.png' a.obj",
                                "-o x.jpg -b transparent a.obj",
                                "--samples 2 a.obj",
                                "--samples 0 a.obj",
                                "--light 5 a.obj",
                                "--light above a.obj",
                                "-c file: a.obj",
                                "-c file -t 4 a.obj",
                                "--depth d.jpg a.obj",
                                "--normals n a.obj",
                                "--ids i.pfm a.obj",
                                "--ids i.png -o '{name}.png' a.obj b.obj",
                                "--depth a.png a.obj",
                                "--depth-step 1 a.obj",
                                "--depth d.png --depth-step 0 a.obj",
                                "--difference d.png a.obj",
                                "--part 0/2 a.obj",
                                "--part 3/2 a.obj",
                                "--part 1 a.obj",
                                "--timeout -1 a.obj",
                                "--timeout x a.obj",
                                "--memory 1X a.obj",
                                "--memory 99999999999G a.obj",
                                "-j 0 a.obj",
                                "--list - -",
                                "- -",
                                "-o - --json a.obj",
                                "-o - --stats a.obj",
                                "-o - --digest a.obj",
                                "-o - a.obj b.obj",
                                "-o - -t 2 a.obj",
                                "--json --stats a.obj",
                                "--format a/b a.obj",
                                "--bogus a.obj",
                                "a.obj -q",
                                "-s",
                                "-s 10 a.obj",
                                "-s 0x5 a.obj",
                                "-s 5x-1 a.obj",
                                "-s 99999x5 a.obj",
                                "-b red a.obj",
                                "-b '#12345' a.obj",
                                "-b '#ggg' a.obj",
                                "-c 5 a.obj",
                                "-c 5,100 a.obj",
                                "-c nan,0 a.obj",
                                "--fov 0 a.obj",
                                "--fov 180 a.obj",
                                "--up x a.obj",
                                "-t 0 a.obj",
                                "-t 1.5 a.obj",
                                "-f cubic a.obj",
                                "--wire=1 a.obj"}) {
    const TResult result = Render(arguments);
    EXPECT_EQ(result.Code, 2) << arguments;
    EXPECT_TRUE(Contains(result, "zxrender: ")) << arguments;
    EXPECT_TRUE(Contains(result, "Try 'zxrender --help'.")) << arguments;
  }
  EXPECT_TRUE(Contains(Render("a.obj -q"), "unknown option '-q'"));
}

TEST(Program, FailuresNameTheFileAndTheReason) {
  const TDirectory directory;
  const TResult missing = Render(directory / "missing.dae");
  EXPECT_EQ(missing.Code, 1);
  EXPECT_EQ(missing.Text,
            "zxrender: " + (directory / "missing.dae") + ": No such file or directory\n");
  const std::string broken = directory.Write("broken.dae", "<COLLADA");
  const TResult damaged = Render(broken);
  EXPECT_EQ(damaged.Code, 1);
  EXPECT_EQ(damaged.Text.rfind("zxrender: " + broken + ": ", 0), 0u);
  EXPECT_GT(damaged.Text.size(), broken.size() + 15);
  const std::string square = directory.Write("square.obj", SquareObj());
  const TResult unwritten = Render(square + " -o /nonexistent/x.png");
  EXPECT_EQ(unwritten.Code, 1);
  EXPECT_EQ(unwritten.Text,
            "zxrender: /nonexistent/x.png: can't be written: No such file or directory\n");
}

TEST(Program, MissingTextureWarnsAndDraws) {
  const TDirectory directory;
  directory.Write("m.mtl", "newmtl m\nmap_Kd nowhere.png\n");
  const std::string model = directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n"));
  const TResult result = Render(model + " -s 20x20 -o " + (directory / "m.png"));
  EXPECT_EQ(result.Code, 0);
  EXPECT_EQ(result.Text, "zxrender: " + model +
                             ": warning: texture 'nowhere.png': not found; drawn without it\n");
  EXPECT_TRUE(std::filesystem::exists(directory / "m.png"));
}

TEST(Program, PictureOfTheSizeAndBackground) {
  const TDirectory directory;
  const std::string square = directory.Write("square.obj", SquareObj());
  const std::string name = directory / "p.png";
  ASSERT_EQ(Render(square + " -s 40x30 -b '#102030' -o " + name).Code, 0);
  DATASURFACE picture = {};
  ASSERT_TRUE(LoadImage(name, nullptr, &picture));
  EXPECT_EQ(picture.Width, 40);
  EXPECT_EQ(picture.Height, 30);
  EXPECT_EQ(picture.Channels, 3);
  EXPECT_EQ(picture.Data[0], 0x10);
  EXPECT_EQ(picture.Data[1], 0x20);
  EXPECT_EQ(picture.Data[2], 0x30);
  FreeDataSurfaceData(picture);
  ASSERT_EQ(Render(square + " -s 40x30 -b transparent -o " + name).Code, 0);
  ASSERT_TRUE(LoadImage(name, nullptr, &picture));
  EXPECT_EQ(picture.Channels, 4);
  EXPECT_EQ(picture.Data[3], 0);
  EXPECT_EQ(picture.Data[picture.RowStride * 15 + 20 * 4 + 3], 255);
  FreeDataSurfaceData(picture);
}

TEST(Program, TurntableNumbersItsPicturesAndIsQuiet) {
  const TDirectory directory;
  const std::string square = directory.Write("square.obj", SquareObj());
  const TResult result = Render(square + " -t 4 -s 20x20 -o " + (directory / "turn.png"));
  EXPECT_EQ(result.Code, 0);
  EXPECT_EQ(result.Text, "");
  for (const char* name : {"turn_000.png", "turn_001.png", "turn_002.png", "turn_003.png"}) {
    EXPECT_TRUE(std::filesystem::exists(directory / name)) << name;
  }
  EXPECT_FALSE(std::filesystem::exists(directory / "turn.png"));
  EXPECT_FALSE(std::filesystem::exists(directory / "turn_004.png"));
}

TEST(Program, Stats) {
  const TDirectory directory;
  const std::string square = directory.Write("square.obj", SquareObj());
  const TResult result = Render("--stats -s 20x20 -o " + (directory / "s.png") + " " + square);
  EXPECT_EQ(result.Code, 0);
  EXPECT_TRUE(Contains(result, "triangles  2\n"));
  EXPECT_TRUE(Contains(result, "vertices   4\n"));
  EXPECT_TRUE(Contains(result, " covered of 400\n"));
  EXPECT_TRUE(Contains(result, "draw "));
}

} // namespace
