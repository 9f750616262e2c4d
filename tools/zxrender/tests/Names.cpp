#include "Names.h"

#include <gtest/gtest.h>

#include "Files.h"

namespace {

TNameValues Values(std::size_t number, std::size_t numbers, std::size_t frame, std::size_t frames) {
  TNameValues values;
  values.Name = "duck";
  values.Number = number;
  values.Numbers = numbers;
  values.Model = 1;
  values.Models = 2;
  values.Frame = frame;
  values.Frames = frames;
  return values;
}

TEST(Names, BracesStandForValues) {
  const TNameValues values = Values(17, 100, 0, 0);
  EXPECT_EQ(FillPattern("{name}_{n}.png", values), "duck_017.png");
  EXPECT_EQ(FillPattern("out/{model}-{frame}.png", values), "out/001-000.png");
  EXPECT_EQ(FillPattern("{{n}}{{{n}}}.png", values), "{n}{017}.png");
  EXPECT_EQ(FillPattern("plain.png", values), "plain.png");
  EXPECT_EQ(FillPattern("{n}", Values(7, 10001, 0, 0)), "00007");
  // What a brace stands for is not read again.
  TNameValues odd = values;
  odd.Name = "{n}";
  EXPECT_EQ(FillPattern("{name}.png", odd), "{n}.png");
}

TEST(Names, FramesGoBeforeTheEnding) {
  EXPECT_EQ(FillPattern("duck.png", Values(7, 12, 7, 12)), "duck_007.png");
  EXPECT_EQ(FillPattern("out/a.b.png", Values(0, 1, 0, 1)), "out/a.b_000.png");
  EXPECT_EQ(FillPattern("duck.png", Values(7, 10001, 7, 10001)), "duck_00007.png");
  EXPECT_EQ(FillPattern("duck", Values(999, 1000, 999, 1000)), "duck_999");
  EXPECT_EQ(FillPattern("{name}-{n}.png", Values(31, 40, 7, 12)), "duck-031.png");
  EXPECT_EQ(FillPattern("{frame}/{name}.png", Values(31, 40, 7, 12)), "007/duck.png");
  EXPECT_EQ(FillPattern("", Values(1, 2, 1, 2)), "");
}

TEST(Names, WrongPatternsAreTold) {
  std::string error;
  for (const char* pattern : {"", "a.png", "{name}{n}{model}{frame}", "{{}}"}) {
    EXPECT_TRUE(CheckPattern(pattern, &error)) << pattern;
  }
  for (const char* pattern : {"{", "}", "{nme}.png", "{n", "{{}", "a}b", "{}"}) {
    error.clear();
    EXPECT_FALSE(CheckPattern(pattern, &error)) << pattern;
    EXPECT_NE(error.find("is none of {name}"), std::string::npos) << pattern;
  }
}

TEST(Names, Stems) {
  EXPECT_EQ(StemOf("/a/b.c/duck.v2.dae"), "duck.v2");
  EXPECT_EQ(StemOf("-"), "stdin");
}

// The numbers of all pictures of a part.
std::vector<std::size_t> Numbers(std::size_t models, int frames, int part, int parts, int jobs) {
  std::vector<std::size_t> numbers;
  for (const TTask& task : MakeTasks(models, frames, part, parts, jobs)) {
    EXPECT_LT(task.FirstFrame, task.EndFrame);
    const std::size_t perModel = static_cast<std::size_t>(std::max(frames, 1));
    for (int frame = task.FirstFrame; frame < task.EndFrame; ++frame) {
      numbers.push_back(task.FirstNumber + static_cast<std::size_t>(frame - task.FirstFrame));
      EXPECT_EQ(numbers.back(), task.Model * perModel + static_cast<std::size_t>(frame));
    }
  }
  return numbers;
}

TEST(Tasks, PartsMakeTheWholeAndDifferByOneAtMost) {
  for (const std::size_t models : {1u, 2u, 7u, 100u}) {
    for (const int frames : {0, 1, 3, 500}) {
      for (const int parts : {1, 2, 3, 8, 600}) {
        for (const int jobs : {1, 4}) {
          const std::size_t pictures = models * static_cast<std::size_t>(std::max(frames, 1));
          std::vector<std::size_t> all;
          std::size_t least = pictures;
          std::size_t most = 0;
          for (int part = 1; part <= parts; ++part) {
            const std::vector<std::size_t> numbers = Numbers(models, frames, part, parts, jobs);
            all.insert(all.end(), numbers.begin(), numbers.end());
            least = std::min(least, numbers.size());
            most = std::max(most, numbers.size());
          }
          ASSERT_EQ(all.size(), pictures);
          for (std::size_t i = 0; i < pictures; ++i) {
            ASSERT_EQ(all[i], i);
          }
          EXPECT_LE(most - least, 1u);
        }
      }
    }
  }
}

TEST(Tasks, ATurntableIsSharedByJobs) {
  EXPECT_EQ(MakeTasks(1, 500, 1, 1, 4).size(), 4u);
  EXPECT_EQ(MakeTasks(4, 500, 1, 1, 4).size(), 4u);
  EXPECT_EQ(MakeTasks(1, 1, 1, 1, 4).size(), 1u);
  EXPECT_EQ(MakeTasks(0, 1, 1, 1, 4).size(), 0u);
}

TEST(List, LinesWithoutCommentsAndEmptyOnes) {
  const TDirectory directory;
  std::vector<std::string> models = {"first"};
  std::string error;
  ASSERT_TRUE(
      ReadList(directory.Write("list", "# models\n\na b.dae\r\n  c\n./#d\nlast"), &models, &error));
  EXPECT_EQ(models, (std::vector<std::string>{"first", "a b.dae", "  c", "./#d", "last"}));
  EXPECT_FALSE(ReadList(directory / "missing", &models, &error));
  EXPECT_EQ(error, "No such file or directory");
  EXPECT_FALSE(ReadList(directory / "", &models, &error));
}

} // namespace
