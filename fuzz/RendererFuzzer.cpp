// Fuzz harness of the renderer facade: each input is a sequence of facade calls with arbitrary
// arguments on a tile window of a live toolkit (an X display is needed; run under Xvfb with
// GLX): negotiation and frame copies from a real decoder, direct frame-buffer requests,
// paints with and without a device context, render-mode switches, forced fallback, aspect
// ratio, destination and host PTZ values (NaN and infinities included), overlays with
// arbitrary text, fonts, colours and rectangles, images of any size (0 x 0 included), and
// deletes and draws of unknown and null images. The overlay callback itself runs calls from
// the input, as a host's would, including calls that switch back-ends in the middle of a paint.
//
// The toolkit, the frame and the tile are made once (LLVMFuzzerInitialize); every input gets
// a new facade on the same tile, which is deleted (with its deferred back-ends) before the
// next input, so inputs do not depend on each other. Toolkit assertions abort.
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <memory>
#include <vector>

#include <decompressor/CDecompressor.h>
#include <decompressor/CDigitalPTZ.h>
#include <decompressor/CPixelLayout.h>
#include <renderer/Renderer.h>
#include <renderer/RendererBase.h>
#include <wx/app.h>
#include <wx/dcclient.h>
#include <wx/dcmemory.h>
#include <wx/evtloop.h>
#include <wx/frame.h>
#include <wx/image.h>
#include <wx/init.h>
#include <wx/log.h>

#include "FuzzPlanes.h"
#include "FuzzValues.h"
#include "NullVideoOutput.h"

namespace {

constexpr int kTileWidth = 320;
constexpr int kTileHeight = 240;
constexpr int kMaxOperations = 48;
constexpr int kMaxOverlayOperations = 12;
constexpr int kUsualSize = 400;

class FuzzApp : public wxApp {
 public:
  bool OnInit() override { return true; }
};

// Keeps verbose logging switched on (so every message is formatted) without printing it.
class SilentLog : public wxLog {
 protected:
  void DoLogRecord(wxLogLevel, const wxString&, const wxLogRecordInfo&) override {}
};

// An image the facade did not make.
class ForeignImage : public IRendererImage {
 public:
  bool IsOk() const override { return true; }
  wxSize GetSize() const override { return wxSize(4, 4); }
};

void AbortOnAssert(const wxString& file, int line, const wxString& function,
                   const wxString& condition, const wxString& message) {
  std::fprintf(stderr, "toolkit assertion at %s:%d in %s: %s %s\n",
               static_cast<const char*>(file.utf8_str()), line,
               static_cast<const char*>(function.utf8_str()),
               static_cast<const char*>(condition.utf8_str()),
               static_cast<const char*>(message.utf8_str()));
  std::abort();
}

void PumpEvents() {
  for (int i = 0; i < 2; ++i) {
    wxTheApp->ProcessPendingEvents();
    while (wxTheApp->Pending()) wxTheApp->Dispatch();
    wxTheApp->ProcessIdle();
  }
}

wxWindow* g_tile = nullptr;

class Session : public IRendererDrawOverlays {
 public:
  explicit Session(FuzzValues& values) : m_values(values) {}

  void Run() {
    if (m_values.Choice(8) == 0) {
      CDecompressor::SetVideoOutputFactory([] { return new NullVideoOutput; });
    }
    m_renderer = std::make_unique<Renderer>(g_tile, Mode());
    m_renderer->SetDrawOverlaysHandler(this);
    for (int step = 0; step < kMaxOperations && !m_values.Empty(); ++step) Step(false);
    m_renderer.reset();
    PumpEvents();
    CDecompressor::SetVideoOutputFactory({});
  }

  // The host's overlay pass: more calls from the input, through the facade or, for the plain
  // drawing helpers, through the back-end that paints.
  void RendererDrawOverlays(IRenderer* backend, wxDC* dc) override {
    for (int step = 0; step < kMaxOverlayOperations && !m_values.Empty(); ++step) {
      if (m_values.Choice(4) == 0) {
        Step(true);
      } else {
        Draw(m_values.Bool() ? backend : m_renderer.get(), dc);
      }
    }
  }

 private:
  RenderMode Mode() {
    switch (m_values.Choice(6)) {
      case 0: return RENDER_MODE_AUTO;
      case 1: return RENDER_MODE_SOFTWARE;
      case 2: return RENDER_MODE_RESERVED;
      case 3: return static_cast<RenderMode>(m_values.Provider().ConsumeIntegral<int>());
      default: return RENDER_MODE_OPENGL;
    }
  }

  void Step(bool painting) {
    switch (m_values.Choice(13)) {
      case 0: Negotiate(); break;
      case 1: CopyArbitraryFrame(); break;
      case 2: LendFrameBuffer(); break;
      case 3:
        if (!painting) Paint();
        break;
      case 4: m_renderer->SetRenderMode(Mode()); break;
      case 5: Fallback(); break;
      case 6: AspectRatio(); break;
      case 7: Destination(); break;
      case 8: HostPtz(); break;
      case 9: Images(); break;
      case 10: m_renderer->SetOpacity(m_values.Provider().ConsumeIntegral<uint8_t>()); break;
      case 11: Queries(); break;
      case 12:
        // Not from inside a paint: idle time there would delete the back-end that paints.
        if (!painting) PumpEvents();
        break;
    }
  }

  // A raw picture of any format and a plausible size in the decoder.
  void NewPicture() {
    const int format = m_values.Format();
    const CPixelLayout layout(format, m_values.Dimension(256), m_values.Dimension(256));
    int pitches[CPixelLayout::kMaxPlanes];
    for (int plane = 0; plane < CPixelLayout::kMaxPlanes; ++plane) {
      pitches[plane] = layout.GetRowBytes(plane);
    }
    FuzzPlanes picture(layout, pitches);
    m_decoder.PutFrame(picture.Planes(), picture.Pitches(), format, layout.GetWidth(),
                       layout.GetHeight(), 0);
  }

  CDigitalPTZ* MaybePtz() { return m_values.Bool() ? &m_hostPtz : nullptr; }

  void Negotiate() {
    if (m_values.Choice(4) == 0 || !m_decoder.HasFrame()) NewPicture();
    int width = m_values.Choice(4) == 0 ? m_values.Dimension(kUsualSize) : m_decoder.GetWidth();
    int height = m_values.Choice(4) == 0 ? m_values.Dimension(kUsualSize) : m_decoder.GetHeight();
    int format = m_values.Format();
    wxRect source(0, 0, width, height);
    CDigitalPTZ* ptz = MaybePtz();
    m_renderer->NegotiateFormat(width, height, format, source,
                                m_values.Bool() ? &m_decoder : nullptr, ptz);
    m_renderer->CopyFrame(m_decoder, width, height, format, source, ptz);
  }

  void CopyArbitraryFrame() {
    m_renderer->CopyFrame(m_decoder, m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize),
                          m_values.Format(), Rect(), MaybePtz());
  }

  // The host fills a lent buffer itself, row by row at the lent pitches.
  void LendFrameBuffer() {
    const int width = m_values.Dimension(kUsualSize);
    const int height = m_values.Dimension(kUsualSize);
    const int format = m_values.Format();
    if (m_values.Choice(4) == 0) {
      m_renderer->GetFrameBuffer(width, height, format, nullptr, m_values.Pitch(width));
      m_renderer->FlushFrameBuffer(nullptr, m_values.Pitch(width));
      return;
    }
    unsigned char* planes[3] = {nullptr, nullptr, nullptr};
    int pitches[3] = {0, 0, 0};
    if (!m_renderer->GetFrameBuffer(width, height, format, planes, pitches)) return;
    const CPixelLayout layout(format, width, height);
    const uint8_t value = m_values.Provider().ConsumeIntegral<uint8_t>();
    for (int plane = 0; plane < layout.GetPlaneCount(); ++plane) {
      if (!planes[plane]) continue;  // a back-end that keeps the picture elsewhere
      for (int row = 0; row < layout.GetRows(plane); ++row) {
        std::fill_n(planes[plane] + static_cast<ptrdiff_t>(row) * pitches[plane],
                    layout.GetRowBytes(plane), value);
      }
    }
    m_renderer->FlushFrameBuffer(planes, pitches);
  }

  void Paint() {
    switch (m_values.Choice(3)) {
      case 0: m_renderer->Render(nullptr); break;
      case 1: {
        wxClientDC dc(g_tile);
        m_renderer->Render(&dc);
        break;
      }
      default: {
        wxBitmap bitmap(m_values.Provider().ConsumeIntegralInRange(1, kUsualSize),
                        m_values.Provider().ConsumeIntegralInRange(1, kUsualSize));
        wxMemoryDC dc(bitmap);
        m_renderer->Render(&dc);
        break;
      }
    }
  }

  void Fallback() {
    switch (m_values.Choice(3)) {
      case 0: m_renderer->ForceSoftwareMode(m_values.Bool()); break;
      case 1: m_renderer->CheckForFallback(); break;
      default: {
        int format = m_values.Format();
        m_renderer->CheckModeForFallback(m_values.Dimension(kUsualSize),
                                         m_values.Dimension(kUsualSize), format);
        break;
      }
    }
  }

  void AspectRatio() {
    switch (m_values.Choice(4)) {
      case 0: m_renderer->SetAspectRatio(m_values.Float(0.2f, 4.0f)); break;
      case 1: m_renderer->SetIgnoreAspectRatio(m_values.Bool()); break;
      case 2: m_renderer->ResetAspectRatio(); break;
      default: {
        std::vector<float> ratios(m_values.Choice(4));
        for (float& ratio : ratios) ratio = m_values.Float(0.2f, 4.0f);
        Renderer::DetermineAspectRatio(ratios, m_values.Bool(), m_values.Coordinate(3));
        break;
      }
    }
  }

  void Destination() {
    switch (m_values.Choice(3)) {
      case 0: m_renderer->SetDestinationRect(Rect()); break;
      case 1: m_renderer->ResetDestinationRect(); break;
      default:
        m_renderer->SetVideoSize(
            wxSize(m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize)));
        break;
    }
  }

  // The host lends its own PTZ (which outlives the facade) or takes the default back.
  void HostPtz() {
    m_hostPtz.SetPanTiltZoom(m_values.Float(-1.5f, 1.5f), m_values.Float(-1.5f, 1.5f),
                             m_values.Float(0.5f, 20.0f));
    if (m_values.Bool()) m_hostPtz.SetMaxZoom(m_values.Float(0.5f, 40.0f));
    m_hostPtz.enabled = m_values.Bool();
    m_hostPtz.SetZoomActive(m_values.Bool());
    m_renderer->GetPtzType().Set(m_values.Choice(4) == 0 ? nullptr : &m_hostPtz);
    if (m_values.Bool()) {
      CDigitalPTZ* inEffect = m_renderer->GetPtz();
      if (inEffect)
        inEffect->SetPanTiltZoom(m_values.Float(-1.5f, 1.5f), m_values.Float(-1.5f, 1.5f),
                                 m_values.Float(0.5f, 20.0f));
    }
  }

  void Images() {
    switch (m_values.Choice(3)) {
      case 0: m_images.push_back(m_renderer->CreateImage(Picture())); break;
      case 1: m_renderer->DeleteImage(AnyImage()); break;
      default: m_renderer->DeleteImages(m_values.Bool() ? m_renderer.get() : nullptr); break;
    }
  }

  void Queries() {
    wxRect destination, source;
    m_renderer->GetSubImageRect(destination, source, m_values.Bool());
    m_renderer->GetAdjustedPtzSourceRect();
    m_renderer->GetCurrentAspectRatio();
    m_renderer->IsModeSupported(m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize),
                                m_values.Format());
    m_renderer->GetPreferredPixelFormat(m_values.Format());
    Renderer::IsRenderModeSupported(Mode());
    Renderer::GetRendererDesc(Mode());
    RendererBase::OsdPosToAlignment(m_values.Coordinate(10));
    if (m_values.Bool()) m_renderer->ClearFrame();
  }

  // ---- Overlays ----

  void Draw(IRenderer* target, wxDC* dc) {
    switch (m_values.Choice(8)) {
      case 0:
      case 1:
        target->DrawLabel(dc, Text(), Font(), Colour(), Rect(), Alignment(), m_values.Bool(),
                          m_values.Bool() ? wxNullColour : Colour());
        break;
      case 2: target->DrawRect(dc, Rect(), Colour()); break;
      case 3: target->DrawRectOutline(dc, Rect(), Colour(), LineWidth()); break;
      case 4: target->DrawLine(dc, Point(), Point(), Colour(), LineWidth()); break;
      case 5:
        target->DrawBitmap(dc, Bitmap(), m_values.Coordinate(kUsualSize),
                           m_values.Coordinate(kUsualSize));
        break;
      case 6:
        target->MeasureText(Text(), Font());
        target->GetLineHeight(Font());
        break;
      default:
        // Images belong to the facade: only the facade is asked to draw them.
        m_renderer->DrawImage(dc, AnyImage(), m_values.Coordinate(kUsualSize),
                              m_values.Coordinate(kUsualSize));
        break;
    }
  }

  // Text from any bytes: as UTF-8, or as raw code points (unpaired surrogates, values past
  // the last code point and NULs included).
  wxString Text() {
    if (m_values.Bool()) return wxString::FromUTF8(m_values.Text(64));
    wxString text;
    for (int i = m_values.Choice(24); i > 0; --i) {
      text.Append(
          static_cast<wxUniChar>(m_values.Provider().ConsumeIntegral<uint32_t>() % 0x110010u));
    }
    return text;
  }

  wxFont Font() {
    if (m_values.Choice(8) == 0) return wxNullFont;
    // Up to a million points: the toolkit itself asserts on sizes whose pango units
    // (1024 a point) pass the int range, so no host can make such a font. -1 is its default.
    constexpr int kHugeSizes[] = {-1, 200, 5000, 60000, 1000000};
    const int size = m_values.Choice(4) == 0
                         ? kHugeSizes[m_values.Choice(static_cast<int>(std::size(kHugeSizes)))]
                         : m_values.Provider().ConsumeIntegralInRange(1, 40);
    const wxFontFamily families[] = {wxFONTFAMILY_DEFAULT, wxFONTFAMILY_SWISS, wxFONTFAMILY_ROMAN,
                                     wxFONTFAMILY_TELETYPE};
    return wxFont(wxFontInfo(size)
                      .Family(families[m_values.Choice(4)])
                      .Bold(m_values.Bool())
                      .Italic(m_values.Bool())
                      .Underlined(m_values.Bool()));
  }

  wxColour Colour() {
    if (m_values.Choice(16) == 0) return wxNullColour;
    FuzzedDataProvider& provider = m_values.Provider();
    return wxColour(provider.ConsumeIntegral<uint8_t>(), provider.ConsumeIntegral<uint8_t>(),
                    provider.ConsumeIntegral<uint8_t>(), provider.ConsumeIntegral<uint8_t>());
  }

  wxRect Rect() {
    return wxRect(m_values.Coordinate(kUsualSize), m_values.Coordinate(kUsualSize),
                  m_values.Dimension(kUsualSize), m_values.Dimension(kUsualSize));
  }

  wxPoint Point() {
    return wxPoint(m_values.Coordinate(kUsualSize), m_values.Coordinate(kUsualSize));
  }

  int Alignment() {
    return m_values.Bool() ? RendererBase::OsdPosToAlignment(m_values.Choice(11))
                           : m_values.Provider().ConsumeIntegral<int>();
  }

  int LineWidth() {
    return m_values.Choice(4) == 0 ? m_values.Dimension(64)
                                   : m_values.Provider().ConsumeIntegralInRange(0, 8);
  }

  // A picture of 0 x 0 (not valid) up to a few hundred pixels, with or without alpha.
  wxImage Picture() {
    const int width =
        m_values.Choice(8) == 0 ? 0 : m_values.Provider().ConsumeIntegralInRange(1, 300);
    const int height =
        m_values.Choice(8) == 0 ? 0 : m_values.Provider().ConsumeIntegralInRange(1, 300);
    if (width == 0 || height == 0) return wxImage();
    wxImage image(width, height);
    const uint8_t value = m_values.Provider().ConsumeIntegral<uint8_t>();
    std::fill_n(image.GetData(), static_cast<size_t>(width) * height * 3, value);
    if (m_values.Bool()) {
      image.InitAlpha();
      std::fill_n(image.GetAlpha(), static_cast<size_t>(width) * height, value);
    }
    return image;
  }

  wxBitmap Bitmap() {
    const wxImage picture = Picture();
    return picture.IsOk() ? wxBitmap(picture) : wxNullBitmap;
  }

  // One of the facade's images (deleted ones included), null, or one it did not make.
  IRendererImage* AnyImage() {
    const int pick = m_values.Choice(static_cast<int>(m_images.size()) + 2);
    if (pick == 0) return nullptr;
    if (pick == 1) return &m_foreignImage;
    return m_images[static_cast<size_t>(pick - 2)];
  }

  FuzzValues& m_values;
  CDigitalPTZ m_hostPtz;  // lent to the facade: declared before it, so it outlives it
  CDecompressor m_decoder;
  ForeignImage m_foreignImage;
  std::vector<IRendererImage*> m_images;  // pointers only: the facade owns them
  std::unique_ptr<Renderer> m_renderer;
};

}  // namespace

extern "C" int LLVMFuzzerInitialize(int* argc, char*** argv) {
  setenv("NO_AT_BRIDGE", "1", 1);
  wxApp::SetInstance(new FuzzApp);
  if (!wxEntryStart(*argc, *argv)) {
    std::fprintf(stderr, "cannot start the toolkit (is DISPLAY set?)\n");
    std::exit(2);
  }
  wxTheApp->CallOnInit();
  wxInitAllImageHandlers();
  wxSetAssertHandler(AbortOnAssert);
  delete wxLog::SetActiveTarget(new SilentLog);
  wxLog::SetVerbose(true);
  // The loop stays active for the whole run, so pumping dispatches the toolkit's events.
  static wxGUIEventLoop loop;
  static wxEventLoopActivator activate(&loop);
  auto* frame = new wxFrame(nullptr, wxID_ANY, "renderer_fuzzer", wxPoint(0, 0), wxDefaultSize);
  frame->SetClientSize(kTileWidth + 20, kTileHeight + 20);
  g_tile = new wxWindow(frame, wxID_ANY, wxPoint(10, 10), wxSize(kTileWidth, kTileHeight));
  frame->Show();
  for (int i = 0; i < 20; ++i) PumpEvents();
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  FuzzedDataProvider provider(data, size);
  FuzzValues values(provider);
  g_tile->SetSize(kTileWidth, kTileHeight);
  g_tile->Show();
  Session(values).Run();
  return 0;
}
