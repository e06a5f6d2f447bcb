// The process-wide registry of renderer descriptions and its verbose log line.
#include "TestBackend.h"
#include "WxTest.h"

namespace {

class Registry : public ::testing::Test {
 protected:
  void SetUp() override {
    for (int mode = 0; mode <= 3; ++mode) RendererBase::ClearRendererDesc(RenderMode(mode));
  }
};

}  // namespace

TEST_F(Registry, FirstLineAddsNoLineBreak) {
  RendererBase::AppendRendererDesc(RENDER_MODE_OPENGL, "a");
  EXPECT_EQ("a", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
}

TEST_F(Registry, LinesAccumulateOnePerCall) {
  RendererBase::AppendRendererDesc(RENDER_MODE_OPENGL, "a");
  RendererBase::AppendRendererDesc(RENDER_MODE_OPENGL, "b");
  EXPECT_EQ("a\nb", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_SOFTWARE));
}

TEST_F(Registry, GetInsertsAnEmptyEntryAndReturnsTheStoredText) {
  wxString& entry = RendererBase::GetRendererDesc(RENDER_MODE_RESERVED);
  EXPECT_EQ("", entry);
  entry = "edited";
  EXPECT_EQ("edited", RendererBase::GetRendererDesc(RENDER_MODE_RESERVED));
}

TEST_F(Registry, ClearRemovesTheEntry) {
  RendererBase::AppendRendererDesc(RENDER_MODE_SOFTWARE, "x");
  RendererBase::ClearRendererDesc(RENDER_MODE_SOFTWARE);
  EXPECT_EQ("", RendererBase::GetRendererDesc(RENDER_MODE_SOFTWARE));
  RendererBase::AppendRendererDesc(RENDER_MODE_SOFTWARE, "y");
  EXPECT_EQ("y", RendererBase::GetRendererDesc(RENDER_MODE_SOFTWARE));
}

TEST_F(Registry, AppendLogsTheTextVerboselyWithItsLocation) {
  LogCapture log;
  RendererBase::AppendRendererDesc(RENDER_MODE_OPENGL, "OpenGL Information - line");
  ASSERT_EQ(1u, log.Lines().size());
  const LogLine& line = log.Lines()[0];
  EXPECT_EQ(wxLOG_Info, line.level);
  EXPECT_EQ(5u, line.level);
  EXPECT_EQ("OpenGL Information - line", line.text);
  EXPECT_EQ("renderer/RendererBase", line.file);
  EXPECT_EQ("AppendRendererDesc", line.function);
}

TEST_F(Registry, AppendLogsNothingWhenVerboseLoggingIsOff) {
  LogCapture log;
  wxLog::SetVerbose(false);
  RendererBase::AppendRendererDesc(RENDER_MODE_OPENGL, "quiet");
  wxLog::SetVerbose(true);
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_EQ("quiet", RendererBase::GetRendererDesc(RENDER_MODE_OPENGL));
}
