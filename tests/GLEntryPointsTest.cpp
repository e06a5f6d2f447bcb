// Looking up the GL functions beyond version 1.1.
#include <cstring>
#include <set>
#include <string>

#include <gtest/gtest.h>

#include <renderer/GLEntryPoints.h>

namespace {

void SomeFunction() {}

std::set<std::string> asked;

GLEntryPoints::Proc RecordingLookup(const char* name) {
  asked.insert(name);
  return &SomeFunction;
}

GLEntryPoints::Proc FindsNothing(const char*) { return nullptr; }

}  // namespace

TEST(GLEntryPoints, AsksForEachFunctionByItsName) {
  asked.clear();
  const GLEntryPoints functions(RecordingLookup);
  EXPECT_EQ((std::set<std::string>{"glGenBuffers", "glBindBuffer", "glBufferData", "glMapBuffer",
                                   "glUnmapBuffer", "glDeleteBuffers", "glGenProgramsARB",
                                   "glBindProgramARB", "glProgramStringARB", "glDeleteProgramsARB",
                                   "glActiveTexture", "glMultiTexCoord2f"}),
            asked);
  EXPECT_TRUE(functions.HasBufferFunctions());
  EXPECT_TRUE(functions.HasProgramFunctions());
  EXPECT_TRUE(functions.HasMultitextureFunctions());
}

TEST(GLEntryPoints, NothingFoundMeansNoGroupIsComplete) {
  const GLEntryPoints functions(FindsNothing);
  EXPECT_FALSE(functions.HasBufferFunctions());
  EXPECT_FALSE(functions.HasProgramFunctions());
  EXPECT_FALSE(functions.HasMultitextureFunctions());
  EXPECT_EQ(nullptr, functions.MapBuffer);
}

TEST(GLEntryPoints, OneMissingFunctionBreaksOnlyItsGroup) {
  const GLEntryPoints functions([](const char* name) -> GLEntryPoints::Proc {
    return std::strcmp(name, "glDeleteProgramsARB") == 0 ? nullptr : &SomeFunction;
  });
  EXPECT_TRUE(functions.HasBufferFunctions());
  EXPECT_FALSE(functions.HasProgramFunctions());
  EXPECT_TRUE(functions.HasMultitextureFunctions());
}

// The window system hands out every function the back-end needs, without a context.
TEST(GLEntryPoints, WindowSystemHasThemAllAndIsAskedOnce) {
  const GLEntryPoints& functions = GLEntryPoints::Get();
  EXPECT_TRUE(functions.HasBufferFunctions());
  EXPECT_TRUE(functions.HasProgramFunctions());
  EXPECT_TRUE(functions.HasMultitextureFunctions());
  EXPECT_EQ(&functions, &GLEntryPoints::Get());
}
