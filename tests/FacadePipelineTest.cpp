// The facade's frame path on doubles: negotiation row by row (the road taken, the values given
// back, the fallback state and the log), the software-scaling threshold, truncation to even,
// the three roads of CopyFrame with their calls and arguments, re-entry, and the fallback's
// own entry points.
#include <functional>

#include <wx/dcmemory.h>

#include <renderer/NativeRenderer.h>

#include "FacadeTest.h"
#include "PipelineDoubles.h"
#include "RecordingVideoOutput.h"

namespace {

std::string Switched(const char* way, int width, int height, int format) {
  return wxString::Format(
             "Renderer Information - Switched to %s rendering. Resolution: %dx%d, "
             "Format: %d",
             way, width, height, format)
      .utf8_string();
}

std::string Scaling(int fromWidth, int fromHeight, int width, int height) {
  return wxString::Format("Performing software scaling from %dx%d to %dx%d.", fromWidth, fromHeight,
                          width, height)
      .utf8_string();
}

const std::string kFrameBufferFailed =
    "Renderer Information - Call to GetFrameBuffer failed. Switching to software mode...";

// The outcome of one negotiation.
struct Negotiated {
  int width;
  int height;
  int format;
  wxRect source;
  bool inFallback;
};

// The size and format a negotiation gave back.
void ExpectFrame(const Negotiated& n, int width, int height, int format) {
  EXPECT_EQ(width, n.width);
  EXPECT_EQ(height, n.height);
  EXPECT_EQ(format, n.format);
}

// A facade whose primary back-end is a recording double taking I420 and RGB24, in a tile of
// 200 x 150: a 320 x 240 frame is shown at 39 % of its area (no software scaling), a
// 1280 x 960 one at 2.4 % (scaled).
class Pipeline : public FacadeTest {
 protected:
  void SetUp() override {
    FacadeTest::SetUp();
    facade = MakeFacade(RENDER_MODE_RESERVED);
    primary = new PipelineBackend(tile);
    primary->supportedFormats = {PIXEL_FORMAT_I420, PIXEL_FORMAT_RGB24};
    facade->InstallBackend(primary, RENDER_MODE_OPENGL);
  }

  Negotiated Negotiate(int width, int height, int format, CDecompressor* decoder = nullptr,
                       CDigitalPTZ* ptz = nullptr) {
    wxRect source(0, 0, width, height);
    const bool result = facade->NegotiateFormat(width, height, format, source, decoder, ptz);
    EXPECT_EQ(result, facade->IsInSoftwareFallback());
    return Negotiated{width, height, format, source, result};
  }

  // The primary takes hardware images (handing `begin` back for them) and `decoder` decodes
  // I420 in hardware: the fast road is open.
  void OpenFastRoad(RecordingDecoder& decoder, bool begin) {
    primary->hardwareDecomp = true;
    primary->beginResult = begin;
    decoder.hardware = true;
    decoder.hardwareFormat = PIXEL_FORMAT_I420;
  }

  bool SlowPathFlag() { return facade->m_renderer->GetNormalPtz()->slowPath; }

  // After `fail` has set the primary up to fail, the frame is not delivered, `line` is logged
  // once and the facade is in software; the next frame, of the same parameters, is delivered
  // there.
  void ExpectFailedFrameThenSoftware(RecordingDecoder& decoder, const std::function<void()>& fail,
                                     const std::string& line) {
    Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_I420, &decoder);
    fail();
    LogCapture log;
    EXPECT_FALSE(facade->CopyFrame(decoder, n.width, n.height, n.format, n.source, nullptr));
    EXPECT_TRUE(facade->IsInSoftwareFallback());
    EXPECT_EQ(1, log.Count(line));

    n = Negotiate(320, 240, PIXEL_FORMAT_I420, &decoder);
    EXPECT_TRUE(n.inFallback);
    EXPECT_TRUE(OnSoftware());
    EXPECT_TRUE(facade->CopyFrame(decoder, n.width, n.height, n.format, n.source, nullptr));
  }
  bool OnSoftware() { return dynamic_cast<NativeRenderer*>(facade->m_renderer) != nullptr; }

  TestRenderer* facade = nullptr;
  PipelineBackend* primary = nullptr;
};

// ---- The decision table, row by row ----------------------------------------------------------

TEST_F(Pipeline, FitAndChangedTakesTheWholeFrameToThePrimary) {
  LogCapture log;
  const Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_I420);
  EXPECT_FALSE(n.inFallback);
  ExpectFrame(n, 320, 240, PIXEL_FORMAT_I420);
  EXPECT_EQ(wxRect(0, 0, 320, 240), n.source);
  EXPECT_EQ(primary, facade->m_renderer);
  EXPECT_FALSE(SlowPathFlag());
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(Pipeline, FitAndChangedLeavesTheFallback) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  facade->SoftwareFallback(true);
  ASSERT_TRUE(facade->IsInSoftwareFallback());
  LogCapture log;
  const Negotiated n = Negotiate(352, 288, PIXEL_FORMAT_I420);
  EXPECT_FALSE(n.inFallback);
  EXPECT_EQ(primary, facade->m_renderer);
  EXPECT_EQ(wxRect(0, 0, 352, 288), n.source);
  EXPECT_EQ(1, log.Count(Switched("hardware", 352, 288, PIXEL_FORMAT_I420)));
}

TEST_F(Pipeline, FitUnchangedOnThePrimaryStaysThere) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  LogCapture log;
  const Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_I420);
  EXPECT_FALSE(n.inFallback);
  EXPECT_EQ(320, n.width);
  EXPECT_EQ(wxRect(0, 0, 320, 240), n.source);
  EXPECT_TRUE(log.Lines().empty());
}

// Once in software with the same frame and a favourable verdict, the facade stays there and
// the software back-end gets the frame at the size shown, in its own format.
TEST_F(Pipeline, FitUnchangedInFallbackStaysInSoftware) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  facade->SoftwareFallback(true);
  LogCapture log;
  const Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_I420);
  EXPECT_TRUE(n.inFallback);
  EXPECT_TRUE(OnSoftware());
  ExpectFrame(n, 200, 150, PIXEL_FORMAT_RGB24);
  EXPECT_EQ(wxRect(0, 0, 320, 240), n.source);
  EXPECT_TRUE(SlowPathFlag());
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(Pipeline, SmallViewIsScaledInSoftwareAndStaysOnThePrimary) {
  LogCapture log;
  const Negotiated n = Negotiate(1280, 960, PIXEL_FORMAT_I420);
  EXPECT_FALSE(n.inFallback);
  EXPECT_EQ(primary, facade->m_renderer);
  ExpectFrame(n, 200, 150, PIXEL_FORMAT_I420);
  EXPECT_EQ(wxRect(0, 0, 1280, 960), n.source);
  EXPECT_TRUE(SlowPathFlag());
  EXPECT_EQ(std::vector<std::string>{Scaling(1280, 960, 200, 150)}, log.Texts());

  LogCapture again;
  Negotiate(1280, 960, PIXEL_FORMAT_I420);
  EXPECT_TRUE(again.Lines().empty()) << "the scaling is told only when something changed";
}

TEST_F(Pipeline, ScaledSizeThePrimaryRefusesGoesToSoftware) {
  primary->largest = wxSize(100, 100);
  LogCapture log;
  const Negotiated n = Negotiate(1280, 960, PIXEL_FORMAT_I420);
  EXPECT_TRUE(n.inFallback);
  EXPECT_TRUE(OnSoftware());
  ExpectFrame(n, 200, 150, PIXEL_FORMAT_RGB24);
  EXPECT_EQ(std::vector<std::string>{Switched("software", 1280, 960, PIXEL_FORMAT_I420)},
            log.Texts());
}

TEST_F(Pipeline, RefusedAndChangedInFallbackReturnsThroughSoftwareScaling) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  facade->SoftwareFallback(true);
  LogCapture log;
  const Negotiated n = Negotiate(1280, 960, PIXEL_FORMAT_I420);
  EXPECT_FALSE(n.inFallback);
  EXPECT_EQ(primary, facade->m_renderer);
  ExpectFrame(n, 200, 150, PIXEL_FORMAT_I420);
  EXPECT_EQ((std::vector<std::string>{Switched("hardware", 1280, 960, PIXEL_FORMAT_I420),
                                      Scaling(1280, 960, 200, 150)}),
            log.Texts());
}

TEST_F(Pipeline, RefusedUnchangedInFallbackStaysInSoftware) {
  primary->largest = wxSize(100, 100);
  Negotiate(1280, 960, PIXEL_FORMAT_I420);
  ASSERT_TRUE(facade->IsInSoftwareFallback());
  IRenderer* software = facade->m_renderer;
  LogCapture log;
  const Negotiated n = Negotiate(1280, 960, PIXEL_FORMAT_I420);
  EXPECT_TRUE(n.inFallback);
  EXPECT_EQ(software, facade->m_renderer);
  ExpectFrame(n, 200, 150, PIXEL_FORMAT_RGB24);
  EXPECT_TRUE(log.Lines().empty());
}

// ---- Threshold, truncation and the requested software mode -----------------------------------

TEST_F(Pipeline, ExactlyAFifthOfTheAreaIsScaledJustAboveIsNot) {
  facade->SetIgnoreAspectRatio(true);  // the frame fills the whole 200 x 150 tile
  EXPECT_TRUE(facade->ShouldSoftwareScale(500, 300, 200, 150));
  EXPECT_FALSE(facade->ShouldSoftwareScale(499, 300, 200, 150));

  Negotiated n = Negotiate(500, 300, PIXEL_FORMAT_I420);
  EXPECT_EQ(200, n.width) << "ratio 0.2 is scaled";
  n = Negotiate(499, 300, PIXEL_FORMAT_I420);
  EXPECT_EQ(499, n.width) << "ratio 0.2004 is not";
}

TEST_F(Pipeline, EngagedHostPtzAlwaysScalesInSoftware) {
  facade->GetPtz()->SetPanTiltZoom(0, 0, 2);
  facade->GetPtz()->enabled = true;
  ASSERT_TRUE(facade->GetPtz()->IsActive());
  EXPECT_TRUE(facade->ShouldSoftwareScale(100, 100, 100, 100));
}

TEST_F(Pipeline, SizesNearTheIntLimitDoNotOverflowTheAreaRatio) {
  EXPECT_FALSE(facade->ShouldSoftwareScale(65536, 65536, 65536, 65536));
  EXPECT_TRUE(facade->ShouldSoftwareScale(2000000000, 2000000000, 1, 1));
  EXPECT_FALSE(facade->ShouldSoftwareScale(0, 0, 10, 10));
}

TEST_F(Pipeline, OddTargetsAreTruncatedToEven) {
  facade->SetIgnoreAspectRatio(true);
  facade->SetDestinationRect(wxRect(0, 0, 641, 481));
  primary->largest = wxSize(1000, 1000);  // the frame itself is refused: road b
  const Negotiated n = Negotiate(1283, 963, PIXEL_FORMAT_I420);
  EXPECT_EQ(640, n.width);
  EXPECT_EQ(480, n.height);
  EXPECT_EQ(wxRect(0, 0, 1282, 962), n.source);
  EXPECT_FALSE(n.inFallback);
}

TEST_F(Pipeline, OddTargetsInSoftwareAreTruncatedToEven) {
  facade->SetIgnoreAspectRatio(true);
  facade->SetDestinationRect(wxRect(0, 0, 641, 481));
  primary->largest = wxSize(100, 100);  // neither the frame nor the target: road c
  const Negotiated n = Negotiate(1283, 963, PIXEL_FORMAT_I420);
  EXPECT_TRUE(n.inFallback);
  EXPECT_EQ(640, n.width);
  EXPECT_EQ(480, n.height);
  EXPECT_EQ(wxRect(0, 0, 1282, 962), n.source);
}

TEST_F(Pipeline, RequestedSoftwareNeverSwitchesToHardware) {
  TestRenderer* software = MakeFacade(RENDER_MODE_SOFTWARE);
  IRenderer* backend = software->m_renderer;
  for (int frame = 0; frame < 3; ++frame) {
    int width = 320;
    int height = 240;
    int format = PIXEL_FORMAT_I420;
    wxRect source(0, 0, width, height);
    EXPECT_FALSE(software->NegotiateFormat(width, height, format, source, nullptr, nullptr));
    EXPECT_EQ(backend, software->m_renderer);
    EXPECT_EQ(backend, software->m_primaryRenderer);
    EXPECT_EQ(PIXEL_FORMAT_RGB24, format);
    // After the first frame, the frame goes to the software back-end at the size shown.
    if (frame > 0) {
      EXPECT_EQ(200, width);
      EXPECT_EQ(150, height);
    }
  }
}

TEST_F(Pipeline, SecondNegotiationAfterAFailedFrameBufferKeepsSoftware) {
  RecordingDecoder decoder;
  ExpectFailedFrameThenSoftware(
      decoder, [this] { primary->failFrameBuffer = true; }, kFrameBufferFailed);
  EXPECT_EQ(1u, decoder.images.size()) << "the failed frame was dropped before decoding";
}

// A back-end that cannot take the filled buffer back (a GL upload that raised an error) would
// show a stale picture: the facade goes to software as after a refused buffer, and stays there
// while the frame parameters do.
TEST_F(Pipeline, AFailedFlushSwitchesToSoftwareForTheNextFrames) {
  RecordingDecoder decoder;
  ExpectFailedFrameThenSoftware(
      decoder, [this] { primary->failFlush = true; },
      "Renderer Information - Call to FlushFrameBuffer failed. Switching to software mode...");
  EXPECT_FALSE(primary->HasFrame());
  EXPECT_EQ(1, primary->flushes) << "the software back-end took the second frame";
}

TEST_F(Pipeline, FailedFrameBufferOfZeroSizeOnlyReturnsFalse) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  LogCapture log;
  EXPECT_FALSE(facade->GetFrameBuffer(0, 240, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_FALSE(facade->GetFrameBuffer(320, 0, PIXEL_FORMAT_I420, planes, pitches));
  EXPECT_FALSE(facade->IsInSoftwareFallback());
  EXPECT_TRUE(log.Lines().empty());
}

// ---- The hardware decoder's log line ---------------------------------------------------------

TEST_F(Pipeline, HardwareDecoderPathIsToldOnlyWhenSomethingChanged) {
  primary->hardwareDecomp = true;
  RecordingDecoder decoder;
  decoder.hardware = true;
  decoder.hardwareFormat = PIXEL_FORMAT_I420;
  LogCapture log;
  Negotiate(320, 240, PIXEL_FORMAT_RGB24, &decoder);
  EXPECT_EQ(1, log.Count("Using fast path for hwdecomp to renderer."));
  Negotiate(320, 240, PIXEL_FORMAT_RGB24, &decoder);
  EXPECT_EQ(1u, log.Lines().size());

  decoder.hardwareFormat = PIXEL_FORMAT_NV12;  // the primary takes no NV12: slow path
  Negotiate(352, 288, PIXEL_FORMAT_RGB24, &decoder);
  EXPECT_EQ(1, log.Count("Using slow path for hwdecomp to renderer."));

  RecordingDecoder software;
  LogCapture quiet;
  Negotiate(320, 240, PIXEL_FORMAT_I420, &software);
  Negotiate(352, 288, PIXEL_FORMAT_RGB24, &software);
  EXPECT_TRUE(quiet.Lines().empty()) << "a software decoder is never told about";
}

TEST_F(Pipeline, HardwareFrameTheDecoderCannotHandOverIsNotForTheFastRoad) {
  primary->hardwareDecomp = true;
  RecordingDecoder decoder;
  decoder.hardware = true;
  decoder.hardwareFormat = PIXEL_FORMAT_I420;
  decoder.requiresSoftware = true;
  const Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_RGB24, &decoder);
  EXPECT_EQ(200, n.width) << "refused for the primary: scaled in software";
  EXPECT_FALSE(n.inFallback);
}

// ---- CopyFrame's roads -----------------------------------------------------------------------

TEST_F(Pipeline, DecoderPresentsThroughItsVideoOutput) {
  primary->takesVideoOutput = true;
  primary->beginResult = true;
  int deletions = 0;
  CDecompressor::SetVideoOutputFactory(
      [&deletions] { return new RecordingVideoOutput(&deletions); });
  RecordingDecoder decoder;
  EXPECT_TRUE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(4, 6, 300, 200), nullptr));
  auto* output = dynamic_cast<RecordingVideoOutput*>(primary->GetVideoOutput());
  ASSERT_NE(nullptr, output);
  EXPECT_EQ((std::vector<std::string>{"BeginHardwareImage", "EndHardwareImage"}), primary->calls);
  EXPECT_EQ(320, primary->begins.at(0).width);
  EXPECT_EQ(240, primary->begins.at(0).height);
  EXPECT_EQ(PIXEL_FORMAT_I420, primary->begins.at(0).format);
  EXPECT_EQ(0, primary->beginInfos.at(0).srcWidth) << "the record is passed zero-filled";
  EXPECT_EQ(std::vector<wxRect>{wxRect(4, 6, 300, 200)}, output->rects);
  EXPECT_EQ(std::vector<IVideoOutput*>{output}, decoder.presentations);
  EXPECT_EQ(std::vector<std::string>{"RenderToVideoOutput"}, decoder.calls);

  // The output is made once and then reused; a refused hardware image is not ended.
  primary->beginResult = false;
  primary->calls.clear();
  EXPECT_TRUE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr));
  EXPECT_EQ(output, primary->GetVideoOutput());
  EXPECT_EQ(std::vector<std::string>{"BeginHardwareImage"}, primary->calls);
  EXPECT_EQ(0, deletions);
}

// A factory registered after the back-end was chosen: a back-end without video-output support
// ignores the new output, and the facade gives it back instead of losing it on every frame.
TEST_F(Pipeline, VideoOutputTheBackendIgnoresIsGivenBack) {
  int deletions = 0;
  CDecompressor::SetVideoOutputFactory(
      [&deletions] { return new RecordingVideoOutput(&deletions); });
  RecordingDecoder decoder;
  facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr);
  facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr);
  EXPECT_EQ(2, deletions);
  EXPECT_TRUE(decoder.presentations.empty());
  EXPECT_EQ(2u, decoder.images.size()) << "the frame went by the frame buffer";
}

TEST_F(Pipeline, FastRoadHandsTheSourceRectangleToTheDecoder) {
  RecordingDecoder decoder;
  OpenFastRoad(decoder, true);
  EXPECT_TRUE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(8, 10, 300, 220), nullptr));
  EXPECT_EQ((std::vector<std::string>{"BeginHardwareImage", "EndHardwareImage"}), primary->calls);
  const HardwareImageInfo& begun = primary->beginInfos.at(0);
  EXPECT_EQ(8, begun.srcX);
  EXPECT_EQ(10, begun.srcY);
  EXPECT_EQ(300, begun.srcWidth);
  EXPECT_EQ(220, begun.srcHeight);
  EXPECT_EQ(nullptr, begun.decoderContext);
  EXPECT_EQ(0u, begun.texture);
  EXPECT_EQ(std::vector<std::string>{"CopyToHardwareImage"}, decoder.calls);
  EXPECT_EQ(300, decoder.copies.at(0).srcWidth);
}

TEST_F(Pipeline, FailedHardwareCopyIsEndedAndReportedWithoutFallback) {
  RecordingDecoder decoder;
  OpenFastRoad(decoder, true);
  decoder.copyResult = DECOMP_ERROR_UNSUPPORTED;
  EXPECT_FALSE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr));
  EXPECT_EQ((std::vector<std::string>{"BeginHardwareImage", "EndHardwareImage"}), primary->calls);
  EXPECT_FALSE(facade->IsInSoftwareFallback());
}

TEST_F(Pipeline, RefusedHardwareImageGoesOnByTheFrameBuffer) {
  RecordingDecoder decoder;
  OpenFastRoad(decoder, false);
  EXPECT_TRUE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr));
  EXPECT_EQ((std::vector<std::string>{"BeginHardwareImage", "GetFrameBuffer", "FlushFrameBuffer"}),
            primary->calls);
  EXPECT_EQ(std::vector<std::string>{"GetImage"}, decoder.calls);
}

TEST_F(Pipeline, FastRoadNeedsTheSlowPathFlagClear) {
  RecordingDecoder decoder;
  OpenFastRoad(decoder, true);
  facade->GetNormalPtz()->slowPath = true;
  facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr);
  EXPECT_EQ((std::vector<std::string>{"GetFrameBuffer", "FlushFrameBuffer"}), primary->calls);
}

TEST_F(Pipeline, EngagedPtzClosesTheVideoOutputAndFastRoads) {
  primary->takesVideoOutput = true;
  primary->hardwareDecomp = true;
  primary->beginResult = true;
  int deletions = 0;
  CDecompressor::SetVideoOutputFactory(
      [&deletions] { return new RecordingVideoOutput(&deletions); });
  RecordingDecoder decoder;
  decoder.hardware = true;
  decoder.hardwareFormat = PIXEL_FORMAT_I420;
  CDigitalPTZ ptz;
  ptz.SetPanTiltZoom(0.5f, 0, 2);
  ptz.enabled = true;
  facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), &ptz);
  EXPECT_EQ((std::vector<std::string>{"GetFrameBuffer", "FlushFrameBuffer"}), primary->calls);
  EXPECT_EQ(std::vector<std::string>{"GetImage"}, decoder.calls);
  EXPECT_EQ(&ptz, decoder.images.at(0).ptz);

  // A PTZ that is not switched on, or not zoomed in, is not engaged.
  ptz.enabled = false;
  primary->calls.clear();
  facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), &ptz);
  ASSERT_FALSE(primary->calls.empty());
  EXPECT_EQ("BeginHardwareImage", primary->calls.front());
}

TEST_F(Pipeline, SlowRoadFillsAndFlushesTheLentBuffer) {
  RecordingDecoder decoder;
  decoder.imageResult = DECOMP_ERROR_NO_FRAME;  // ignored: the flush decides
  EXPECT_TRUE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(2, 4, 316, 232), nullptr));
  EXPECT_EQ((std::vector<std::string>{"GetFrameBuffer", "FlushFrameBuffer"}), primary->calls);
  ASSERT_EQ(1u, decoder.images.size());
  const RecordingDecoder::ImageCall& call = decoder.images[0];
  EXPECT_EQ(PIXEL_FORMAT_I420, call.format);
  EXPECT_EQ(320, call.width);
  EXPECT_EQ(240, call.height);
  EXPECT_EQ(wxRect(2, 4, 316, 232), call.source);
  EXPECT_EQ(nullptr, call.ptz);
  EXPECT_TRUE(facade->HasFrame());
}

TEST_F(Pipeline, NestedCopyFrameOfAnyFacadeIsRefused) {
  TestRenderer* other = MakeFacade(RENDER_MODE_SOFTWARE);
  RecordingDecoder decoder;
  RecordingDecoder inner;
  bool sameResult = true;
  bool otherResult = true;
  decoder.duringGetImage = [&] {
    sameResult =
        facade->CopyFrame(inner, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr);
    otherResult =
        other->CopyFrame(inner, 320, 240, PIXEL_FORMAT_RGB24, wxRect(0, 0, 320, 240), nullptr);
  };
  EXPECT_TRUE(
      facade->CopyFrame(decoder, 320, 240, PIXEL_FORMAT_I420, wxRect(0, 0, 320, 240), nullptr));
  EXPECT_FALSE(sameResult);
  EXPECT_FALSE(otherResult);
  EXPECT_TRUE(inner.calls.empty());
  EXPECT_EQ((std::vector<std::string>{"GetFrameBuffer", "FlushFrameBuffer"}), primary->calls);
  EXPECT_FALSE(other->HasFrame());

  // The guard is left on return: the next call goes through.
  EXPECT_TRUE(
      other->CopyFrame(inner, 320, 240, PIXEL_FORMAT_RGB24, wxRect(0, 0, 320, 240), nullptr));
}

// ---- The fallback's entry points -------------------------------------------------------------

TEST_F(Pipeline, FallbackOnARequestedSoftwareFacadeDoesNothing) {
  TestRenderer* software = MakeFacade(RENDER_MODE_SOFTWARE);
  IRenderer* backend = software->m_renderer;
  LogCapture log;
  software->SoftwareFallback(true);
  EXPECT_EQ(backend, software->m_renderer);
  EXPECT_FALSE(software->IsInSoftwareFallback());
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(Pipeline, FallbackOnAPrimaryThatIsAlreadySoftwareDoesNothing) {
  RunProbe(tile);
  OpenGLRenderer::m_isSupported = false;
  TestRenderer* settled = MakeFacade(RENDER_MODE_OPENGL);
  ASSERT_EQ(RENDER_MODE_SOFTWARE, settled->m_primaryMode);
  IRenderer* backend = settled->m_renderer;
  LogCapture log;
  settled->SoftwareFallback(true);
  EXPECT_EQ(backend, settled->m_renderer);
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(Pipeline, TwoFallbacksInARowMakeOneSoftwareBackend) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  LogCapture log;
  facade->SoftwareFallback(true);
  IRenderer* software = facade->m_renderer;
  facade->SoftwareFallback(true);
  EXPECT_EQ(software, facade->m_renderer);
  EXPECT_EQ(primary, facade->m_primaryRenderer);
  EXPECT_EQ(RENDER_MODE_OPENGL, facade->m_primaryMode) << "restored after making the software one";
  EXPECT_EQ(std::vector<std::string>{Switched("software", 320, 240, PIXEL_FORMAT_I420)},
            log.Texts());
}

TEST_F(Pipeline, FallbackClearsThePrimaryFrameAndKeepsItsSettingsOnReturn) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  ASSERT_TRUE(facade->GetFrameBuffer(320, 240, PIXEL_FORMAT_I420, planes, pitches));
  facade->FlushFrameBuffer(planes, pitches);
  facade->SetAspectRatio(1.25f);
  facade->SoftwareFallback(true);
  EXPECT_FALSE(primary->HasFrame());
  EXPECT_FLOAT_EQ(1.25f, facade->GetAspectRatio()) << "copied to the software back-end";

  facade->SetAspectRatio(2.0f);
  facade->SetOpacity(77);
  facade->SetDestinationRect(wxRect(1, 2, 30, 40));
  facade->SoftwareFallback(false);
  EXPECT_EQ(primary, facade->m_renderer);
  EXPECT_FLOAT_EQ(2.0f, primary->GetAspectRatio());
  EXPECT_EQ(77, primary->GetOpacity());
  EXPECT_EQ(wxRect(1, 2, 30, 40), primary->GetDestinationRect());
}

// A host takes the PTZ in effect before negotiating and passes it on to CopyFrame; the
// negotiation may end the fallback, and the software back-end's PTZ must still be there.
TEST_F(Pipeline, PtzTakenBeforeTheWayBackStaysValidThroughTheFrame) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  facade->ForceSoftwareMode(true);
  CDigitalPTZ* ptz = facade->GetPtz();
  ptz->SetPanTiltZoom(0.5f, 0.25f, 1.0f);
  RecordingDecoder decoder;
  const Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_I420, &decoder, ptz);
  ASSERT_FALSE(n.inFallback);
  EXPECT_FALSE(ptz->IsActive());
  EXPECT_TRUE(facade->CopyFrame(decoder, n.width, n.height, n.format, n.source, ptz));
  EXPECT_EQ(ptz, decoder.images.at(0).ptz);
  PumpEvents();  // the software back-end goes now
}

TEST_F(Pipeline, EveryChildOfTheParentIsHiddenInFallbackAndShownOnReturn) {
  auto* first = new wxWindow(tile, wxID_ANY, wxPoint(0, 0), wxSize(10, 10));
  auto* second = new wxWindow(tile, wxID_ANY, wxPoint(20, 0), wxSize(10, 10));
  facade->SoftwareFallback(true);
  EXPECT_FALSE(first->IsShown());
  EXPECT_FALSE(second->IsShown());
  facade->SoftwareFallback(false);
  EXPECT_TRUE(first->IsShown());
  EXPECT_TRUE(second->IsShown());
}

TEST_F(Pipeline, CheckModeForFallbackStaysInFallbackForTheSameParameters) {
  int format = PIXEL_FORMAT_I420;
  EXPECT_FALSE(facade->CheckModeForFallback(320, 240, format));
  EXPECT_EQ(PIXEL_FORMAT_I420, format);
  facade->SoftwareFallback(true);
  for (int call = 0; call < 2; ++call) {
    format = PIXEL_FORMAT_I420;
    EXPECT_TRUE(facade->CheckModeForFallback(320, 240, format));
    EXPECT_EQ(PIXEL_FORMAT_RGB24, format) << "the software back-end's format";
    EXPECT_EQ(wxSize(320, 240), facade->GetVideoSize());
  }
}

TEST_F(Pipeline, CheckModeForFallbackSwitchesForAFrameThePrimaryRefuses) {
  primary->largest = wxSize(100, 100);
  int format = PIXEL_FORMAT_I420;
  EXPECT_TRUE(facade->CheckModeForFallback(320, 240, format));
  EXPECT_EQ(PIXEL_FORMAT_RGB24, format);
  format = PIXEL_FORMAT_I420;
  EXPECT_FALSE(facade->CheckModeForFallback(96, 72, format)) << "a fitting change goes back";
  EXPECT_EQ(PIXEL_FORMAT_I420, format);
}

TEST_F(Pipeline, ForcedSoftwareHoldsOnlyUntilTheNextFavourableNegotiation) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  facade->ForceSoftwareMode(true);
  EXPECT_TRUE(facade->IsInSoftwareFallback());
  EXPECT_FALSE(facade->m_lastHardware);
  const Negotiated n = Negotiate(320, 240, PIXEL_FORMAT_I420);
  EXPECT_FALSE(n.inFallback);
  EXPECT_EQ(primary, facade->m_renderer);
}

TEST_F(Pipeline, ForceSoftwareModeOffReturns) {
  facade->ForceSoftwareMode(true);
  facade->ForceSoftwareMode(false);
  EXPECT_FALSE(facade->IsInSoftwareFallback());
  EXPECT_FALSE(facade->m_lastHardware);
}

TEST_F(Pipeline, CheckForFallbackRenegotiatesTheCurrentVideo) {
  Negotiate(320, 240, PIXEL_FORMAT_I420);
  facade->ForceSoftwareMode(true);
  EXPECT_FALSE(facade->CheckForFallback());
  EXPECT_EQ(primary, facade->m_renderer);
  EXPECT_EQ(320, facade->m_lastWidth);
  EXPECT_EQ(240, facade->m_lastHeight);
}

TEST_F(Pipeline, HardwareSizeLimitIsOffAtZero) {
  EXPECT_EQ(0, facade->m_maxHardwareWidth);
  EXPECT_EQ(0, facade->m_maxHardwareHeight);
  bool hardware = false;
  bool changed = false;
  facade->UpdateLastFormat(8000, 8000, PIXEL_FORMAT_I420, hardware, changed);
  EXPECT_TRUE(hardware);
  // Switched on by a test, it refuses larger frames without asking the primary.
  facade->m_maxHardwareWidth = 640;
  facade->m_maxHardwareHeight = 480;
  facade->UpdateLastFormat(641, 480, PIXEL_FORMAT_I420, hardware, changed);
  EXPECT_FALSE(hardware);
  EXPECT_TRUE(changed);
}

TEST_F(Pipeline, UpdateLastFormatReportsAChangedVerdictAlone) {
  bool hardware = false;
  bool changed = false;
  facade->UpdateLastFormat(320, 240, PIXEL_FORMAT_I420, hardware, changed);
  EXPECT_TRUE(changed) << "the first negotiation always changes";
  facade->UpdateLastFormat(320, 240, PIXEL_FORMAT_I420, hardware, changed);
  EXPECT_FALSE(changed);
  primary->largest = wxSize(100, 100);
  facade->UpdateLastFormat(320, 240, PIXEL_FORMAT_I420, hardware, changed);
  EXPECT_FALSE(hardware);
  EXPECT_TRUE(changed);
  EXPECT_EQ(PIXEL_FORMAT_I420, facade->m_lastFormat);
}

}  // namespace
