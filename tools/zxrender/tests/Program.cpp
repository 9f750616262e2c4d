#include <cstdio>
#include <cstdlib>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include <ZxPixelKit/ZxPixelKit.h>

#include "Files.h"
#include "Options.h"

namespace {

struct RESULT {
  int Code;
  std::string Text; ///< both outputs
};

RESULT Render(const std::string& arguments) {
  RESULT result = {-1, ""};
  std::FILE* pipe = popen((ZX_RENDER_PROGRAM " " + arguments + " 2>&1").c_str(), "r");
  if (pipe == nullptr) {
    return result;
  }
  char part[256];
  while (std::fgets(part, sizeof part, pipe) != nullptr) {
    result.Text += part;
  }
  const int status = pclose(pipe);
  result.Code = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  return result;
}

bool Contains(const RESULT& result, const std::string& text) {
  return result.Text.find(text) != std::string::npos;
}

TEST(Program, HelpAndVersion) {
  const RESULT help = Render("--help");
  EXPECT_EQ(help.Code, 0);
  for (const char* option :
       {"--output", "--size", "--background", "--camera", "--fov", "--up", "--turntable", "--wire",
        "--filter", "--stats", "--help", "--version", "Exit status"}) {
    EXPECT_TRUE(Contains(help, option)) << option;
  }
  EXPECT_EQ(Render("-h").Text, help.Text);
  EXPECT_EQ(Render("--version").Code, 0);
}

TEST(Program, WrongCommandLines) {
  for (const char* arguments : {"",
                                "a.obj b.obj",
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
    const RESULT result = Render(arguments);
    EXPECT_EQ(result.Code, 2) << arguments;
    EXPECT_TRUE(Contains(result, "zxrender: ")) << arguments;
    EXPECT_TRUE(Contains(result, "Try 'zxrender --help'.")) << arguments;
  }
  EXPECT_TRUE(Contains(Render("a.obj -q"), "unknown option '-q'"));
}

TEST(Program, FailuresNameTheFileAndTheReason) {
  const TDirectory directory;
  const RESULT missing = Render(directory / "missing.dae");
  EXPECT_EQ(missing.Code, 1);
  EXPECT_EQ(missing.Text,
            "zxrender: " + (directory / "missing.dae") + ": No such file or directory\n");
  const std::string broken = directory.Write("broken.dae", "<COLLADA");
  const RESULT damaged = Render(broken);
  EXPECT_EQ(damaged.Code, 1);
  EXPECT_EQ(damaged.Text.rfind("zxrender: " + broken + ": ", 0), 0u);
  EXPECT_GT(damaged.Text.size(), broken.size() + 15);
  const std::string square = directory.Write("square.obj", SquareObj());
  const RESULT unwritten = Render(square + " -o /nonexistent/x.png");
  EXPECT_EQ(unwritten.Code, 1);
  EXPECT_EQ(unwritten.Text, "zxrender: /nonexistent/x.png: can't be written\n");
}

TEST(Program, MissingTextureWarnsAndDraws) {
  const TDirectory directory;
  directory.Write("m.mtl", "newmtl m\nmap_Kd nowhere.png\n");
  const std::string model = directory.Write("m.obj", SquareObj("mtllib m.mtl\nusemtl m\n"));
  const RESULT result = Render(model + " -s 20x20 -o " + (directory / "m.png"));
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
  const RESULT result = Render(square + " -t 4 -s 20x20 -o " + (directory / "turn.png"));
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
  const RESULT result = Render("--stats -s 20x20 -o " + (directory / "s.png") + " " + square);
  EXPECT_EQ(result.Code, 0);
  EXPECT_TRUE(Contains(result, "triangles  2\n"));
  EXPECT_TRUE(Contains(result, "vertices   4\n"));
  EXPECT_TRUE(Contains(result, " covered of 400\n"));
  EXPECT_TRUE(Contains(result, "draw "));
}

TEST(FrameName, DigitsAndDirectories) {
  EXPECT_EQ(FrameName("duck.png", 7, 12), "duck_007.png");
  EXPECT_EQ(FrameName("out/a.b.png", 0, 1), "out/a.b_000.png");
  EXPECT_EQ(FrameName("duck.png", 7, 10001), "duck_00007.png");
  EXPECT_EQ(FrameName("duck", 999, 1000), "duck_999");
}

} // namespace
