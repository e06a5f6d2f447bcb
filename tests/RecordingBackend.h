// A back-end double for the facade suites: every IRenderer operation that the facade passes on
// is recorded as "Name(arguments)" and answered with a value derived from the double's seed,
// so two doubles with different seeds give different answers (odd seeds answer true, even
// ones false). It draws nothing and changes no state of its own, so asking it the same thing
// twice gives the same answer. Image operations are recorded too and then do what the base
// does (a test may make CreateImage fail).
#pragma once

#include <iomanip>
#include <sstream>
#include <string>
#include <vector>

#include "RecordingVideoOutput.h"
#include "TestBackend.h"

// Arguments and results written out the way the double records them.
inline std::string Str(bool value) { return value ? "true" : "false"; }
inline std::string Str(int value) { return std::to_string(value); }
inline std::string Str(unsigned char value) { return std::to_string(int{value}); }
inline std::string Str(float value) {
  std::ostringstream out;
  out << std::setprecision(9) << value;
  return out.str();
}
inline std::string Str(const void* pointer) {
  if (!pointer) return "null";
  std::ostringstream out;
  out << pointer;
  return out.str();
}
inline std::string Str(const wxSize& size) { return Str(size.x) + "x" + Str(size.y); }
inline std::string Str(const wxPoint& point) {
  return "(" + Str(point.x) + "," + Str(point.y) + ")";
}
inline std::string Str(const wxRect& rect) {
  return "(" + Str(rect.x) + "," + Str(rect.y) + "," + Str(rect.width) + "," + Str(rect.height) +
         ")";
}
inline std::string Str(const wxColour& colour) {
  if (!colour.IsOk()) return "no-colour";
  return "rgba(" + Str(int{colour.Red()}) + "," + Str(int{colour.Green()}) + "," +
         Str(int{colour.Blue()}) + "," + Str(int{colour.Alpha()}) + ")";
}
inline std::string Str(const wxFont& font) {
  return font.IsOk() ? font.GetNativeFontInfoDesc().utf8_string() : "no-font";
}
inline std::string Str(const wxString& text) { return "'" + text.utf8_string() + "'"; }
inline std::string Str(const wxBitmap& bitmap) {
  return "bitmap" + Str(static_cast<const void*>(bitmap.GetRefData()));
}

class RecordingBackend : public TestBackend {
 public:
  RecordingBackend(wxWindow* parent, int seed)
      : TestBackend(parent), m_seed(seed), m_output(&m_outputDeletions) {}

  // What the double was asked, in order.
  mutable std::vector<std::string> calls;
  // When set, CreateImage answers null (and keeps nothing).
  bool createNullImages = false;

  // Calls whose record starts with `name` followed by "(".
  int Count(const std::string& name) const {
    int count = 0;
    for (const std::string& call : calls) count += call.rfind(name + "(", 0) == 0 ? 1 : 0;
    return count;
  }

  // The seed's answers.
  bool Answer() const { return m_seed % 2 == 1; }
  int Number() const { return 100 + m_seed; }
  float Fraction() const { return static_cast<float>(m_seed) + 0.5f; }
  wxSize Size() const { return wxSize(10 * m_seed + 1, 10 * m_seed + 2); }
  wxRect Rect(int factor = 1) const {
    const int base = m_seed * factor;
    return wxRect(base, base + 1, base + 2, base + 3);
  }

  bool RequiresDC() override { return Record("RequiresDC()", Answer()); }
  bool IsModeSupported(int width, int height, int format) override {
    return Record("IsModeSupported(" + Str(width) + "," + Str(height) + "," + Str(format) + ")",
                  Answer());
  }
  bool IsPixelFormatSupported(int format) override {
    return Record("IsPixelFormatSupported(" + Str(format) + ")", Answer());
  }
  bool IsHardwareDecompSupported() override {
    return Record("IsHardwareDecompSupported()", Answer());
  }
  int GetPreferredPixelFormat(int format) override {
    return Record("GetPreferredPixelFormat(" + Str(format) + ")", Number());
  }
  int GetPixelFormat() override { return Record("GetPixelFormat()", Number() + 1); }
  bool ClearFrame() override { return Record("ClearFrame()", Answer()); }
  bool HasFrame() override { return Record("HasFrame()", Answer()); }
  void SetVideoOutput(IVideoOutput* output) override {
    calls.push_back("SetVideoOutput(" + Str(output) + ")");
  }
  IVideoOutput* GetVideoOutput() override {
    return Record<IVideoOutput*>("GetVideoOutput()", &m_output);
  }
  bool BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) override {
    info.width = Number();
    return Record("BeginHardwareImage(" + Str(width) + "," + Str(height) + "," + Str(format) + "," +
                      Str(&info) + ":" + Str(info.srcX) + ")",
                  Answer());
  }
  void EndHardwareImage(HardwareImageInfo& info) override {
    calls.push_back("EndHardwareImage(" + Str(&info) + ":" + Str(info.srcX) + ")");
  }
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override {
    return Record("GetFrameBuffer(" + Str(width) + "," + Str(height) + "," + Str(format) + "," +
                      Str(planes) + "," + Str(pitches) + ")",
                  Answer());
  }
  bool GetFrameBuffer(int width, int height, int format, unsigned char* buffer,
                      int pitch) override {
    return Record("GetFrameBuffer(" + Str(width) + "," + Str(height) + "," + Str(format) + "," +
                      Str(buffer) + "," + Str(pitch) + ")",
                  Answer());
  }
  bool FlushFrameBuffer(unsigned char** planes, int* pitches) override {
    return Record("FlushFrameBuffer(" + Str(planes) + "," + Str(pitches) + ")", Answer());
  }
  bool FlushFrameBuffer(unsigned char* buffer, int pitch) override {
    return Record("FlushFrameBuffer(" + Str(buffer) + "," + Str(pitch) + ")", Answer());
  }
  void SetIgnoreAspectRatio(bool ignore) override {
    calls.push_back("SetIgnoreAspectRatio(" + Str(ignore) + ")");
  }
  bool GetIgnoreAspectRatio() override { return Record("GetIgnoreAspectRatio()", Answer()); }
  void SetAspectRatio(float ratio) override {
    calls.push_back("SetAspectRatio(" + Str(ratio) + ")");
  }
  float GetAspectRatio() override { return Record("GetAspectRatio()", Fraction()); }
  float GetCurrentAspectRatio() override {
    return Record("GetCurrentAspectRatio()", Fraction() + 1);
  }
  void ResetAspectRatio() override { calls.push_back("ResetAspectRatio()"); }
  wxSize GetVideoSize() override { return Record("GetVideoSize()", Size()); }
  void SetVideoSize(wxSize size) override { calls.push_back("SetVideoSize(" + Str(size) + ")"); }
  NormalDigitalPTZ* GetNormalPtz() override {
    return Record<NormalDigitalPTZ*>("GetNormalPtz()", &m_normalPtz);
  }
  CDigitalPTZ* GetPtz() override { return Record<CDigitalPTZ*>("GetPtz()", &m_ptz); }
  CDigitalPTZType& GetPtzType() override {
    calls.push_back("GetPtzType()");
    return m_ptzType;
  }
  void SetDestinationRect(wxRect rect) override {
    calls.push_back("SetDestinationRect(" + Str(rect) + ")");
  }
  wxRect GetDestinationRect() override { return Record("GetDestinationRect()", Rect()); }
  void ResetDestinationRect() override { calls.push_back("ResetDestinationRect()"); }
  wxSize GetRenderClientSize() override { return Record("GetRenderClientSize()", Size()); }
  void GetRenderClientSize(int& width, int& height) override {
    calls.push_back("GetRenderClientSize(" + Str(width) + "," + Str(height) + ")");
    width = Number();
    height = Number() + 2;
  }
  void GetSubImageRect(wxRect& destination, wxRect& source, bool force) override {
    calls.push_back("GetSubImageRect(" + Str(destination) + "," + Str(source) + "," + Str(force) +
                    ")");
    destination = Rect();
    source = Rect(2);
  }
  void GetSubImageRect(int width, int height, wxRect& destination, wxRect& source,
                       bool force) override {
    calls.push_back("GetSubImageRect(" + Str(width) + "," + Str(height) + "," + Str(destination) +
                    "," + Str(source) + "," + Str(force) + ")");
    destination = Rect(3);
    source = Rect(4);
  }
  wxRect GetAdjustedPtzSourceRect() override {
    return Record("GetAdjustedPtzSourceRect()", Rect(5));
  }
  void Render(wxDC* dc) override { calls.push_back("Render(" + Str(dc) + ")"); }
  wxSize MeasureText(const wxString& text, wxFont font) override {
    return Record("MeasureText(" + Str(text) + "," + Str(font) + ")", Size());
  }
  int GetLineHeight(wxFont font) override {
    return Record("GetLineHeight(" + Str(font) + ")", Number() + 2);
  }
  IRendererImage* CreateImage(const wxImage& image) override {
    calls.push_back("CreateImage(" + Str(image.IsOk() ? image.GetSize() : wxSize()) + ")");
    if (createNullImages) return nullptr;
    return RendererBase::CreateImage(image);
  }
  void DeleteImage(IRendererImage* image) override {
    calls.push_back("DeleteImage(" + Str(image) + ")");
    RendererBase::DeleteImage(image);
  }
  void DrawImage(wxDC* dc, IRendererImage* image, int x, int y) override {
    calls.push_back("DrawImage(" + Str(dc) + "," + Str(image) + "," + Str(x) + "," + Str(y) + ")");
  }
  void DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) override {
    calls.push_back("DrawBitmap(" + Str(dc) + "," + Str(bitmap) + "," + Str(x) + "," + Str(y) +
                    ")");
  }
  void DrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour textColour, wxRect rect,
                 int alignment, bool scale, wxColour background) override {
    calls.push_back("DrawLabel(" + Str(dc) + "," + Str(text) + "," + Str(font) + "," +
                    Str(textColour) + "," + Str(rect) + "," + Str(alignment) + "," + Str(scale) +
                    "," + Str(background) + ")");
  }
  void DrawRect(wxDC* dc, wxRect rect, wxColour colour) override {
    calls.push_back("DrawRect(" + Str(dc) + "," + Str(rect) + "," + Str(colour) + ")");
  }
  void DrawRectOutline(wxDC* dc, wxRect rect, wxColour colour, int width) override {
    calls.push_back("DrawRectOutline(" + Str(dc) + "," + Str(rect) + "," + Str(colour) + "," +
                    Str(width) + ")");
  }
  void DrawLine(wxDC* dc, wxPoint from, wxPoint to, wxColour colour, int width) override {
    calls.push_back("DrawLine(" + Str(dc) + "," + Str(from) + "," + Str(to) + "," + Str(colour) +
                    "," + Str(width) + ")");
  }
  unsigned char GetOpacity() const override {
    return Record("GetOpacity()", static_cast<unsigned char>(Number()));
  }
  void SetOpacity(unsigned char opacity) override {
    calls.push_back("SetOpacity(" + Str(opacity) + ")");
  }
  void SetDrawOverlaysHandler(IRendererDrawOverlays* handler) override {
    calls.push_back("SetDrawOverlaysHandler(" + Str(handler) + ")");
    RendererBase::SetDrawOverlaysHandler(handler);
  }

  using RendererBase::m_drawOverlaysHandler;

 private:
  template <typename T>
  T Record(const std::string& call, T answer) const {
    calls.push_back(call);
    return answer;
  }

  int m_seed;
  int m_outputDeletions = 0;
  RecordingVideoOutput m_output;
  NormalDigitalPTZ m_ptz;
};
