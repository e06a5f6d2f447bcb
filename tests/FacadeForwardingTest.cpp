// The facade passes every plain IRenderer operation to its active back-end: the same
// operation, the same arguments, and the back-end's answer handed back as it is. During a
// software fallback the active back-end is the software one, never the primary one. The
// operations the facade keeps for itself (its parent, the host's overlay handler) reach no
// back-end.
#include <cctype>
#include <functional>
#include <string>
#include <tuple>
#include <vector>

#include <wx/dcmemory.h>

#include "FacadeTest.h"
#include "RecordingBackend.h"

namespace {

// The arguments the table passes: real objects, so the records can name them by address.
struct Arguments {
  wxMemoryDC dc;
  wxBitmap bitmap{12, 8};
  wxFont font{wxFontInfo(13).Family(wxFONTFAMILY_TELETYPE).Bold()};
  HardwareImageInfo info{17, 18, 19, 20, nullptr, 0, 0, 0, 0};
  unsigned char buffer[16] = {};
  unsigned char* planes[3] = {buffer, buffer + 4, buffer + 8};
  int pitches[3] = {64, 32, 32};
  RecordingVideoOutput* output = nullptr;
};

struct Forwarded {
  const char* name;
  // Calls the operation on `renderer` and writes out what came back (results and out
  // arguments); empty for an operation with nothing to give back.
  std::function<std::string(IRenderer&, Arguments&)> call;
  // The record the back-end must make of that call.
  std::function<std::string(const Arguments&)> record;
};

std::string Dc(const Arguments& a) { return Str(static_cast<const void*>(&a.dc)); }

const std::vector<Forwarded>& Table() {
  static const std::vector<Forwarded> table = {
      {"RequiresDC", [](IRenderer& r, Arguments&) { return Str(r.RequiresDC()); },
       [](const Arguments&) { return "RequiresDC()"; }},
      {"IsModeSupported",
       [](IRenderer& r, Arguments&) { return Str(r.IsModeSupported(641, 479, 22)); },
       [](const Arguments&) { return "IsModeSupported(641,479,22)"; }},
      {"IsPixelFormatSupported",
       [](IRenderer& r, Arguments&) { return Str(r.IsPixelFormatSupported(21)); },
       [](const Arguments&) { return "IsPixelFormatSupported(21)"; }},
      {"IsHardwareDecompSupported",
       [](IRenderer& r, Arguments&) { return Str(r.IsHardwareDecompSupported()); },
       [](const Arguments&) { return "IsHardwareDecompSupported()"; }},
      {"GetPreferredPixelFormat",
       [](IRenderer& r, Arguments&) { return Str(r.GetPreferredPixelFormat(23)); },
       [](const Arguments&) { return "GetPreferredPixelFormat(23)"; }},
      {"GetPixelFormat", [](IRenderer& r, Arguments&) { return Str(r.GetPixelFormat()); },
       [](const Arguments&) { return "GetPixelFormat()"; }},
      {"ClearFrame", [](IRenderer& r, Arguments&) { return Str(r.ClearFrame()); },
       [](const Arguments&) { return "ClearFrame()"; }},
      {"HasFrame", [](IRenderer& r, Arguments&) { return Str(r.HasFrame()); },
       [](const Arguments&) { return "HasFrame()"; }},
      {"SetVideoOutput",
       [](IRenderer& r, Arguments& a) {
         r.SetVideoOutput(a.output);
         return std::string();
       },
       [](const Arguments& a) { return "SetVideoOutput(" + Str(a.output) + ")"; }},
      {"GetVideoOutput", [](IRenderer& r, Arguments&) { return Str(r.GetVideoOutput()); },
       [](const Arguments&) { return "GetVideoOutput()"; }},
      {"BeginHardwareImage",
       [](IRenderer& r, Arguments& a) {
         a.info.width = 0;
         const bool begun = r.BeginHardwareImage(352, 288, 22, a.info);
         return Str(begun) + " width " + Str(a.info.width);
       },
       [](const Arguments& a) { return "BeginHardwareImage(352,288,22," + Str(&a.info) + ":17)"; }},
      {"EndHardwareImage",
       [](IRenderer& r, Arguments& a) {
         r.EndHardwareImage(a.info);
         return std::string();
       },
       [](const Arguments& a) { return "EndHardwareImage(" + Str(&a.info) + ":17)"; }},
      {"GetFrameBuffer(buffer,pitch)",
       [](IRenderer& r, Arguments& a) { return Str(r.GetFrameBuffer(8, 2, 2, a.buffer, 24)); },
       [](const Arguments& a) { return "GetFrameBuffer(8,2,2," + Str(a.buffer) + ",24)"; }},
      {"FlushFrameBuffer(planes,pitches)",
       [](IRenderer& r, Arguments& a) { return Str(r.FlushFrameBuffer(a.planes, a.pitches)); },
       [](const Arguments& a) {
         return "FlushFrameBuffer(" + Str(a.planes) + "," + Str(a.pitches) + ")";
       }},
      {"FlushFrameBuffer(buffer,pitch)",
       [](IRenderer& r, Arguments& a) { return Str(r.FlushFrameBuffer(a.buffer, 24)); },
       [](const Arguments& a) { return "FlushFrameBuffer(" + Str(a.buffer) + ",24)"; }},
      {"SetIgnoreAspectRatio",
       [](IRenderer& r, Arguments&) {
         r.SetIgnoreAspectRatio(true);
         return std::string();
       },
       [](const Arguments&) { return "SetIgnoreAspectRatio(true)"; }},
      {"GetIgnoreAspectRatio",
       [](IRenderer& r, Arguments&) { return Str(r.GetIgnoreAspectRatio()); },
       [](const Arguments&) { return "GetIgnoreAspectRatio()"; }},
      {"SetAspectRatio",
       [](IRenderer& r, Arguments&) {
         r.SetAspectRatio(1.2345678f);
         return std::string();
       },
       [](const Arguments&) { return "SetAspectRatio(1.23456776)"; }},
      {"GetAspectRatio", [](IRenderer& r, Arguments&) { return Str(r.GetAspectRatio()); },
       [](const Arguments&) { return "GetAspectRatio()"; }},
      {"GetCurrentAspectRatio",
       [](IRenderer& r, Arguments&) { return Str(r.GetCurrentAspectRatio()); },
       [](const Arguments&) { return "GetCurrentAspectRatio()"; }},
      {"ResetAspectRatio",
       [](IRenderer& r, Arguments&) {
         r.ResetAspectRatio();
         return std::string();
       },
       [](const Arguments&) { return "ResetAspectRatio()"; }},
      {"GetVideoSize", [](IRenderer& r, Arguments&) { return Str(r.GetVideoSize()); },
       [](const Arguments&) { return "GetVideoSize()"; }},
      {"SetVideoSize",
       [](IRenderer& r, Arguments&) {
         r.SetVideoSize(wxSize(1919, 1081));
         return std::string();
       },
       [](const Arguments&) { return "SetVideoSize(1919x1081)"; }},
      {"GetNormalPtz",
       [](IRenderer& r, Arguments&) { return Str(static_cast<void*>(r.GetNormalPtz())); },
       [](const Arguments&) { return "GetNormalPtz()"; }},
      {"GetPtz", [](IRenderer& r, Arguments&) { return Str(static_cast<void*>(r.GetPtz())); },
       [](const Arguments&) { return "GetPtz()"; }},
      {"GetPtzType", [](IRenderer& r, Arguments&) { return Str(&r.GetPtzType()); },
       [](const Arguments&) { return "GetPtzType()"; }},
      {"SetDestinationRect",
       [](IRenderer& r, Arguments&) {
         r.SetDestinationRect(wxRect(-3, 4, 55, 66));
         return std::string();
       },
       [](const Arguments&) { return "SetDestinationRect((-3,4,55,66))"; }},
      {"GetDestinationRect", [](IRenderer& r, Arguments&) { return Str(r.GetDestinationRect()); },
       [](const Arguments&) { return "GetDestinationRect()"; }},
      {"ResetDestinationRect",
       [](IRenderer& r, Arguments&) {
         r.ResetDestinationRect();
         return std::string();
       },
       [](const Arguments&) { return "ResetDestinationRect()"; }},
      {"GetRenderClientSize()",
       [](IRenderer& r, Arguments&) { return Str(r.GetRenderClientSize()); },
       [](const Arguments&) { return "GetRenderClientSize()"; }},
      {"GetRenderClientSize(width,height)",
       [](IRenderer& r, Arguments&) {
         int width = 7;
         int height = 9;
         r.GetRenderClientSize(width, height);
         return Str(width) + "," + Str(height);
       },
       [](const Arguments&) { return "GetRenderClientSize(7,9)"; }},
      {"GetSubImageRect(destination,source)",
       [](IRenderer& r, Arguments&) {
         wxRect destination(1, 2, 3, 4);
         wxRect source(5, 6, 7, 8);
         r.GetSubImageRect(destination, source, true);
         return Str(destination) + Str(source);
       },
       [](const Arguments&) { return "GetSubImageRect((1,2,3,4),(5,6,7,8),true)"; }},
      {"GetSubImageRect(width,height,destination,source)",
       [](IRenderer& r, Arguments&) {
         wxRect destination(9, 8, 7, 6);
         wxRect source(5, 4, 3, 2);
         r.GetSubImageRect(320, 180, destination, source, false);
         return Str(destination) + Str(source);
       },
       [](const Arguments&) { return "GetSubImageRect(320,180,(9,8,7,6),(5,4,3,2),false)"; }},
      {"GetAdjustedPtzSourceRect",
       [](IRenderer& r, Arguments&) { return Str(r.GetAdjustedPtzSourceRect()); },
       [](const Arguments&) { return "GetAdjustedPtzSourceRect()"; }},
      {"Render",
       [](IRenderer& r, Arguments& a) {
         r.Render(&a.dc);
         return std::string();
       },
       [](const Arguments& a) { return "Render(" + Dc(a) + ")"; }},
      {"MeasureText",
       [](IRenderer& r, Arguments& a) { return Str(r.MeasureText("Cam 7\nGate", a.font)); },
       [](const Arguments& a) { return "MeasureText('Cam 7\nGate'," + Str(a.font) + ")"; }},
      {"GetLineHeight", [](IRenderer& r, Arguments& a) { return Str(r.GetLineHeight(a.font)); },
       [](const Arguments& a) { return "GetLineHeight(" + Str(a.font) + ")"; }},
      {"DrawBitmap",
       [](IRenderer& r, Arguments& a) {
         r.DrawBitmap(&a.dc, a.bitmap, -5, 6);
         return std::string();
       },
       [](const Arguments& a) { return "DrawBitmap(" + Dc(a) + "," + Str(a.bitmap) + ",-5,6)"; }},
      {"DrawLabel",
       [](IRenderer& r, Arguments& a) {
         r.DrawLabel(&a.dc, "North gate", a.font, wxColour(1, 2, 3, 4), wxRect(5, 6, 70, 80),
                     wxALIGN_RIGHT | wxALIGN_BOTTOM, true, wxColour(9, 10, 11, 12));
         return std::string();
       },
       [](const Arguments& a) {
         return "DrawLabel(" + Dc(a) + ",'North gate'," + Str(a.font) +
                ",rgba(1,2,3,4),(5,6,70,80)," + Str(wxALIGN_RIGHT | wxALIGN_BOTTOM) +
                ",true,rgba(9,10,11,12))";
       }},
      {"DrawRect",
       [](IRenderer& r, Arguments& a) {
         r.DrawRect(&a.dc, wxRect(1, 2, 3, 4), wxColour(200, 100, 50, 25));
         return std::string();
       },
       [](const Arguments& a) { return "DrawRect(" + Dc(a) + ",(1,2,3,4),rgba(200,100,50,25))"; }},
      {"DrawRectOutline",
       [](IRenderer& r, Arguments& a) {
         r.DrawRectOutline(&a.dc, wxRect(4, 3, 2, 1), wxColour(7, 8, 9, 10), 3);
         return std::string();
       },
       [](const Arguments& a) {
         return "DrawRectOutline(" + Dc(a) + ",(4,3,2,1),rgba(7,8,9,10),3)";
       }},
      {"DrawLine",
       [](IRenderer& r, Arguments& a) {
         r.DrawLine(&a.dc, wxPoint(1, 2), wxPoint(30, -40), wxColour(0, 255, 0, 99), 5);
         return std::string();
       },
       [](const Arguments& a) {
         return "DrawLine(" + Dc(a) + ",(1,2),(30,-40),rgba(0,255,0,99),5)";
       }},
      {"GetOpacity", [](IRenderer& r, Arguments&) { return Str(r.GetOpacity()); },
       [](const Arguments&) { return "GetOpacity()"; }},
      {"SetOpacity",
       [](IRenderer& r, Arguments&) {
         r.SetOpacity(77);
         return std::string();
       },
       [](const Arguments&) { return "SetOpacity(77)"; }},
  };
  return table;
}

class Forwarding : public FacadeTest,
                   public ::testing::WithParamInterface<std::tuple<size_t, bool>> {
 protected:
  void SetUp() override {
    FacadeTest::SetUp();
    facade = MakeFacade(RENDER_MODE_SOFTWARE);
    // The doubles' parent is the frame, the facade's the tile: a parent answered from a
    // back-end would show.
    active = new RecordingBackend(frame, 1);
    facade->InstallBackend(active, RENDER_MODE_SOFTWARE);
    primary = active;
    if (std::get<1>(GetParam())) {
      // As in a software fallback: the facade owns both.
      primary = new RecordingBackend(frame, 2);
      facade->m_primaryRenderer = primary;
    }
    arguments.output = new RecordingVideoOutput(&outputDeletions);
    active->calls.clear();
  }

  void TearDown() override {
    delete arguments.output;
    FacadeTest::TearDown();
  }

  TestRenderer* facade = nullptr;
  RecordingBackend* active = nullptr;
  RecordingBackend* primary = nullptr;
  Arguments arguments;
  int outputDeletions = 0;
};

TEST_P(Forwarding, ReachesTheActiveBackendAndReturnsItsAnswer) {
  const Forwarded& operation = Table().at(std::get<0>(GetParam()));
  ASSERT_TRUE(facade->IsInSoftwareFallback() == std::get<1>(GetParam()));

  const std::string answer = operation.call(*facade, arguments);

  EXPECT_EQ(std::vector<std::string>{operation.record(arguments)}, active->calls)
      << "the active back-end got the call, once, with the arguments as given";
  EXPECT_EQ(operation.call(*active, arguments), answer) << "the back-end's answer, unchanged";
  if (primary != active) {
    EXPECT_TRUE(primary->calls.empty())
        << "the primary back-end was asked: " << primary->calls.front();
  }
  // A second double (another seed) answers differently, so the answer above is the active
  // back-end's own and not one the facade made up.
  if (!answer.empty()) {
    RecordingBackend other(frame, 2);
    EXPECT_NE(operation.call(other, arguments), answer);
  }
}

std::string OperationName(const ::testing::TestParamInfo<std::tuple<size_t, bool>>& info) {
  std::string name = Table().at(std::get<0>(info.param)).name;
  for (char& c : name) {
    if (!std::isalnum(static_cast<unsigned char>(c))) c = '_';
  }
  return name + (std::get<1>(info.param) ? "_InFallback" : "_Normally");
}

INSTANTIATE_TEST_SUITE_P(EveryForwardedOperation, Forwarding,
                         ::testing::Combine(::testing::Range(size_t{0}, Table().size()),
                                            ::testing::Bool()),
                         OperationName);

using OwnOperations = FacadeTest;

TEST_F(OwnOperations, ParentIsTheFacadesOwn) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  auto* backend = new RecordingBackend(frame, 1);
  facade->InstallBackend(backend, RENDER_MODE_SOFTWARE);
  backend->calls.clear();
  EXPECT_EQ(tile, facade->GetParent());
  EXPECT_EQ(frame, backend->GetParent());
  EXPECT_TRUE(backend->calls.empty());
}

TEST_F(OwnOperations, HostOverlayHandlerStaysWithTheFacade) {
  TestRenderer* facade = MakeFacade(RENDER_MODE_SOFTWARE);
  auto* backend = new RecordingBackend(frame, 1);
  facade->InstallBackend(backend, RENDER_MODE_SOFTWARE);
  backend->calls.clear();
  OverlayFunction host([](IRenderer*, wxDC*) {});
  facade->SetDrawOverlaysHandler(&host);
  EXPECT_EQ(&host, facade->m_drawOverlaysHandler);
  EXPECT_TRUE(backend->calls.empty()) << backend->calls.front();
  EXPECT_EQ(facade, backend->m_drawOverlaysHandler) << "the back-end keeps the facade";
}

}  // namespace
