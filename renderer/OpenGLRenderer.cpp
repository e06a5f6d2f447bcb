// OpenGLRenderer: capability probe, canvas and context lifecycle, the draw bracket and the
// overlay primitives of the GL back-end.
#include "OpenGLRenderer.h"

#include <algorithm>
#include <climits>
#include <cstdio>
#include <cstring>
#include <string>
#include <utility>

#include <GL/glu.h>
#include <wx/scrolwin.h>
#include <wx/tooltip.h>

#include "CurrentContextScope.h"
#include "FragmentPrograms.h"
#include "GLEntryPoints.h"
#include "GLErrors.h"
#include "GLFaults.h"
#include "InternalGLCanvas.h"
#include "NativeWindow.h"
#include "OpenGLImage.h"
#include "RendererLog.h"
#include "wxGLFont.h"

namespace {

constexpr const char* kSource = "renderer/OpenGLRenderer";

// After the first renderer exists the context is re-bound on every SetCurrent, because the
// toolkit or the host may have made another context current in between.
bool m_alwaysSetCurrent = false;
// Live renderers; the shared canvas and context go when it falls back to 0.
int RendererCount = 0;

// Logs the pending GL error, if any; whether there was one (defined with the frame upload).
bool LogPendingGLError(const char* function, const char* description);

// Whether the implementation accepts a texture of this size and format, asked through the
// proxy target so that nothing is allocated. A proxy drill refuses every size.
bool ProxyTextureFits(int internalFormat, int width, int height, unsigned int format) {
  if (GLFaults::IsSet(GLFault::TextureProxy)) return false;
  glTexImage2D(GL_PROXY_TEXTURE_2D, 0, internalFormat, width, height, 0, format, GL_UNSIGNED_BYTE,
               nullptr);
  GLint accepted = 0;
  glGetTexLevelParameteriv(GL_PROXY_TEXTURE_2D, 0, GL_TEXTURE_WIDTH, &accepted);
  return accepted == width;
}

const char* YesNo(bool value) { return value ? "Yes" : "No"; }

// A colour byte as GL's 0 to 1.
float Unit(unsigned char byte) { return static_cast<float>(byte / 255.0); }

// Offsets of the far edge of a wide line, per unit of width, by the direction of the line:
// rows for y2 < y1, y2 = y1, y2 > y1; columns for x2 < x1, x2 = x1, x2 > x1. The full width
// goes into each axis, also for diagonals.
constexpr int kLineOffsetX[3][3] = {{-1, 1, 1}, {0, 0, 0}, {-1, 1, 1}};
constexpr int kLineOffsetY[3][3] = {{1, 0, 1}, {1, 0, 1}, {-1, 0, -1}};

int Direction(int from, int to) { return to < from ? 0 : (to == from ? 1 : 2); }

// Vertices sit half a pixel up and left of the integer point (x, y). Host geometry arrives as
// ints that may lie near the int limits; corners are summed in double, where no sum of two ints
// overflows, and GL clips whatever lies off the canvas.
void VertexMinusHalf(double x, double y) { glVertex2d(x - 0.5, y - 0.5); }

// Ring `ring` of an outline (0 the outermost): the pixel centres of the outermost rows and
// columns of the rectangle pulled in by `ring` on every side, closed back to its start.
void OutlineRing(const wxRect& rect, int ring) {
  const double left = static_cast<double>(rect.x) + ring + 0.5;
  const double top = static_cast<double>(rect.y) + ring + 0.5;
  const double right = static_cast<double>(rect.x) + rect.width - ring - 1.5;
  const double bottom = static_cast<double>(rect.y) + rect.height - ring - 1.5;
  glVertex2d(left, top);
  glVertex2d(right, top);
  glVertex2d(right, bottom);
  glVertex2d(left, bottom);
  glVertex2d(left, top);
}

// The rings an outline of `width` can show in `rect`: past half the smaller side a ring turns
// inside out and only repaints pixels the inner rings lit (a width of INT_MAX would otherwise
// loop for ever). A degenerate rectangle keeps its one ring, as it always had.
int VisibleRings(const wxRect& rect, int width) {
  const long long smaller = std::min(rect.width, rect.height);
  const long long half = std::max(1LL, (smaller + 1) / 2);
  return static_cast<int>(std::min<long long>(width, half));
}

template <typename Deleter>
void DeleteNames(std::vector<unsigned int>& names, Deleter deleter) {
  if (names.empty()) return;
  deleter(static_cast<GLsizei>(names.size()), names.data());
  names.clear();
}

// Shows a hidden window for as long as it lives and hides it again afterwards: a context
// cannot be made current on a canvas whose window is hidden.
class ShownWhileAlive {
 public:
  explicit ShownWhileAlive(wxWindow* window)
      : m_window(window && !window->IsShown() ? window : nullptr) {
    if (m_window) m_window->Show();
  }
  ~ShownWhileAlive() {
    if (m_window) m_window->Hide();
  }
  ShownWhileAlive(const ShownWhileAlive&) = delete;
  ShownWhileAlive& operator=(const ShownWhileAlive&) = delete;

 private:
  wxWindow* m_window;
};

}  // namespace

bool OpenGLRenderer::m_isSharedContext = false;
InternalGLCanvas* OpenGLRenderer::m_sharedCanvas = nullptr;
wxGLContext* OpenGLRenderer::m_sharedContext = nullptr;
bool OpenGLRenderer::m_isBgrSupported = false;
bool OpenGLRenderer::m_isPixelBufferSupported = false;
bool OpenGLRenderer::m_isNonPow2Supported = false;
bool OpenGLRenderer::m_isShaderSupported = false;
bool OpenGLRenderer::m_isTextRectSupported = false;
bool OpenGLRenderer::m_isSupported = true;
bool OpenGLRenderer::m_isRecommended = true;
wxSize OpenGLRenderer::m_maxTextureSize(0, 0);
wxRect OpenGLRenderer::m_sharedViewport(0, 0, 0, 0);
std::vector<FontReference*> OpenGLRenderer::m_sharedFonts;

// ---- Extension strings -----------------------------------------------------------------------

bool IsExtensionSupported(const char* name) {
  static std::string extensions;
  static bool loaded = false;
  if (!loaded) {
    // Marked before reading, so that a failed first read is never retried.
    loaded = true;
    const GLubyte* list = glGetString(GL_EXTENSIONS);
    if (!list) {
      LogVerbose(kSource, "IsExtensionSupported",
                 "Error getting supported extensions. Is your OpenGL context created and set?\n");
      return false;
    }
    extensions = reinterpret_cast<const char*>(list);
    LogVerbose(kSource, "IsExtensionSupported",
               wxString::Format("GL Extensions: %s", extensions.c_str()));
  }
  return IsExtensionSupported(extensions.c_str(), name);
}

// A match counts only as a whole token: preceded by the start of the list or a space, and
// followed by a space or the end. Only spaces separate tokens.
bool IsExtensionSupported(const char* list, const char* name) {
  if (!list || !name || !*name) return false;
  const size_t length = strlen(name);
  const char* start = list;
  for (;;) {
    const char* found = strstr(start, name);
    if (!found) return false;
    while (found != list && found[-1] != ' ') {
      found = strstr(found + length, name);
      if (!found) return false;
    }
    const char after = found[length];
    if (after == '\0' || after == ' ') return true;
    start = found + length;
  }
}

// The window-system layer's list is never read: the first call only marks it loaded, and
// every call matches against the empty list.
bool IsGLXExtensionSupported(const char* name) {
  static std::string extensions;
  static bool loaded = false;
  if (!loaded) {
    loaded = true;
    return false;
  }
  return IsExtensionSupported(extensions.c_str(), name);
}

// ---- Capability probe ------------------------------------------------------------------------

int OpenGLRenderer::StaticInit(OpenGLRenderer* renderer) {
  DriverQueries driver;
  driver.hasExtension = [](const char* name) { return IsExtensionSupported(name); };
  driver.acceptsSquareTexture = [](int side) {
    return ProxyTextureFits(GL_RGBA, side, side, GL_RGBA);
  };
  driver.string = [](unsigned int name) {
    return DriverString(reinterpret_cast<const char*>(glGetString(name)));
  };
  driver.entryPoints = &GLEntryPoints::Get();
  return Probe(renderer, driver);
}

// The description cleared is that of RENDER_MODE_RESERVED while the lines go to
// RENDER_MODE_OPENGL; hosts read the registry that way, so it is kept.
int OpenGLRenderer::Probe(OpenGLRenderer* renderer, const DriverQueries& driver) {
  ClearRendererDesc(RENDER_MODE_RESERVED);
  renderer->SetCurrent();
  DetectExtensions(driver);
  m_maxTextureSize = FindMaxTextureSize(driver.acceptsSquareTexture, m_maxTextureSize);
  glGetError();  // the proxy probes may have raised errors; they mean nothing here
  const wxString rendererName = driver.string(GL_RENDERER);
  const wxString vendor = driver.string(GL_VENDOR);
  AppendCapabilities(vendor, rendererName, driver.string(GL_VERSION));
  m_isRecommended = IsRecommendedRenderer(rendererName);
  const bool wasSharedContext = m_isSharedContext;
  m_alwaysSetCurrent = true;
  if (!m_isRecommended) {
    AppendRendererDesc(RENDER_MODE_OPENGL,
                       "OpenGL Information - OpenGL is not recommended on this system.");
  }
  // The place for a driver rule that needs a context per renderer: such a rule clears
  // m_isSharedContext above, and the renderer then moves to a context of its own.
  if (m_isSharedContext != wasSharedContext) renderer->SwitchToMultipleContexts();
  return 0;
}

// For the two names of one feature, the second is asked only when the first is missing.
void OpenGLRenderer::DetectExtensions(const DriverQueries& driver) {
  const auto& has = driver.hasExtension;
  const GLEntryPoints& functions = *driver.entryPoints;
  m_isBgrSupported = has("GL_EXT_bgra");
  m_isPixelBufferSupported =
      (has("GL_EXT_pixel_buffer_object") || has("GL_ARB_pixel_buffer_object")) &&
      functions.HasBufferFunctions();
  m_isNonPow2Supported = has("GL_ARB_texture_non_power_of_two");
  m_isShaderSupported = has("GL_ARB_fragment_program") && functions.HasProgramFunctions() &&
                        functions.HasMultitextureFunctions();
  m_isTextRectSupported = has("GL_EXT_texture_rectangle") || has("GL_NV_texture_rectangle");
}

// The only bound is the driver's first refusal (and the largest side an int can double to).
wxSize OpenGLRenderer::FindMaxTextureSize(const std::function<bool(int side)>& accepts,
                                          wxSize previous) {
  wxSize size = previous;
  for (int side = 256; accepts(side); side *= 2) {
    size = wxSize(side, side);
    if (side > INT_MAX / 2) break;
  }
  return size;
}

void OpenGLRenderer::AppendCapabilities(const wxString& vendor, const wxString& renderer,
                                        const wxString& version) {
  const wxString lines[] = {
      wxString::Format("OpenGL Capabilities - Vendor: %s", vendor),
      wxString::Format("OpenGL Capabilities - Renderer: %s", renderer),
      wxString::Format("OpenGL Capabilities - Version: %s", version),
      wxString::Format("OpenGL Capabilities - BGR Supported: %s", YesNo(m_isBgrSupported)),
      wxString::Format("OpenGL Capabilities - Pixel Buffer Supported: %s",
                       YesNo(m_isPixelBufferSupported)),
      wxString::Format("OpenGL Capabilities - Non Power of 2 Supported: %s",
                       YesNo(m_isNonPow2Supported)),
      wxString::Format("OpenGL Capabilities - Rectangular Textures Supported: %s",
                       YesNo(m_isTextRectSupported)),
      wxString::Format("OpenGL Capabilities - Shaders Supported: %s", YesNo(m_isShaderSupported)),
      wxString::Format("OpenGL Capabilities - Max Texture Size: %dx%d", m_maxTextureSize.x,
                       m_maxTextureSize.y),
      wxString::Format("OpenGL Capabilities - Shared Context: %s", YesNo(m_isSharedContext)),
  };
  for (const wxString& line : lines) AppendRendererDesc(RENDER_MODE_OPENGL, line);
}

// Implementations known to be slow or broken for video: indirect rendering, Mesa's old
// software rasteriser and the Windows fallback. The match is case-sensitive.
bool OpenGLRenderer::IsRecommendedRenderer(const wxString& renderer) {
  return !renderer.Contains("Indirect") && !renderer.Contains("Software Rasterizer") &&
         !renderer.Contains("GDI Generic");
}

// Drivers are not bound to UTF-8: a vendor name in Latin-1 would convert to nothing and leave
// an empty capability line (and an empty renderer name always passes the recommendation), so
// bytes that are not UTF-8 are taken as Latin-1, which keeps every one of them.
wxString OpenGLRenderer::DriverString(const char* bytes) {
  if (!bytes) return wxString();
  const wxString text = wxString::FromUTF8(bytes);
  if (!text.empty() || !*bytes) return text;
  return wxString(bytes, wxConvISO8859_1);
}

void OpenGLRenderer::SwitchToMultipleContexts() {
  AppendRendererDesc(RENDER_MODE_OPENGL,
                     "OpenGL Information - Switching to multiple contexts due to known driver "
                     "issues.");
  if (m_context == m_sharedContext) m_context = nullptr;
  delete m_sharedContext;
  m_sharedContext = nullptr;
  delete m_context;
  m_context = nullptr;
  // The canvas about to be destroyed must not stay behind as the shared one: the new canvas
  // takes its place.
  if (m_canvas && m_canvas == m_sharedCanvas) m_sharedCanvas = nullptr;
  InternalGLCanvas* canvas = CreateCanvas();
  if (m_canvas) {
    ReleaseIfCurrentOn(*m_canvas);
    m_canvas->Destroy();
  }
  m_canvas = canvas;
}

// ---- Construction and destruction ------------------------------------------------------------

OpenGLRenderer::OpenGLRenderer(wxWindow* parent)
    : RendererBase(parent),
      m_isGLInitialized(false),
      m_canvas(nullptr),
      m_context(nullptr),
      m_isDoubleBuffered(true),
      m_viewport(0, 0, 0, 0),
      m_ortho(0, 0, 0, 0),
      m_textureSize(0, 0),
      m_hardwareSurface(nullptr),
      m_texturePixelFormat(PIXEL_FORMAT_NONE),
      m_activeOverlayFont(nullptr),
      m_inOverlayPass(false),
      m_makeCurrentFailed(false) {
  ++RendererCount;
  if (GetIsSupported() && m_parent && !HasGLVisual()) {
    // The toolkit asserts (a dialog, in a GUI program) when it is asked for a GL canvas on a
    // display without a GL visual: such a display has no GL at all for this process, and the
    // facade takes the software back-end.
    LogVerbose(kSource, "OpenGLRenderer",
               "OpenGL Information - No OpenGL visual on this display; OpenGL is not supported.");
    m_isSupported = false;
  }
  if (GetIsSupported() && m_parent) {
    m_canvas = CreateCanvas();
    static const int init = StaticInit(this);
    if (init != 0) m_isSupported = false;
  }
  if (!m_parent) return;  // nothing to draw into: no canvas was made (no window to hold it)
  m_parentSize = std::make_unique<EventBinding<wxSizeEvent, OpenGLRenderer>>(
      m_parent, wxEVT_SIZE, &OpenGLRenderer::OnSize, this);
  m_parentDestroy = std::make_unique<EventBinding<wxWindowDestroyEvent, OpenGLRenderer>>(
      m_parent, wxEVT_DESTROY, &OpenGLRenderer::OnParentDestroyed, this);
  wxSizeEvent initialSize(m_parent->GetClientSize());
  OnSize(initialSize);
}

// The order matters: the context must be current while the GL objects go, the shared context
// outlives every renderer but the last, and the shared canvas stays alive (hidden, detached)
// until then.
OpenGLRenderer::~OpenGLRenderer() {
  const ShownWhileAlive parentShown(m_parent);
  ReleaseGLObjects();
  m_parentSize.reset();
  m_parentDestroy.reset();
  if (m_context == m_sharedContext) m_context = nullptr;
  --RendererCount;
  if (RendererCount == 0 && m_sharedContext) {
    m_sharedViewport = wxRect(0, 0, 0, 0);
    delete m_sharedContext;
    m_sharedContext = nullptr;
  }
  ReleaseCanvas();
  if (RendererCount == 0 && m_sharedCanvas) {
    ReleaseIfCurrentOn(*m_sharedCanvas);
    m_sharedCanvas->Destroy();
    m_sharedCanvas = nullptr;
  }
  delete m_context;
  m_context = nullptr;
}

// The display is asked once: a GL visual does not come or go while the process runs.
bool OpenGLRenderer::HasGLVisual() {
  if (GLFaults::IsSet(GLFault::NoVisual)) return false;
  static const bool displaySupported =
      wxGLCanvas::IsDisplaySupported(static_cast<const int*>(nullptr));
  return displaySupported;
}

InternalGLCanvas* OpenGLRenderer::CreateCanvas() {
  auto* canvas = new InternalGLCanvas(m_parent, wxID_ANY, nullptr, wxDefaultPosition, wxDefaultSize,
                                      wxTRANSPARENT_WINDOW | wxFULL_REPAINT_ON_RESIZE, "OpenGL",
                                      wxNullPalette);
  RealizeNativeWindow(canvas);  // tiles are often built before their window is first shown
  if (!m_sharedCanvas) m_sharedCanvas = canvas;
  if (!m_isSharedContext) {
    m_context = new wxGLContext(canvas, m_sharedContext);
  } else {
    m_context = m_sharedContext ? m_sharedContext : new wxGLContext(canvas);
  }
  if (!m_sharedContext) m_sharedContext = m_context;
  return canvas;
}

void OpenGLRenderer::ReleaseGLObjects() {
  WithShareGroupCurrent([this] {
    DeleteTextures();
    ResetOverlayFonts();
    CleanupOverlayFonts();
    // The images' textures go while this context still exists; after it is gone their
    // deletion would reach no context and leave them in the share group.
    DeleteImages();
  });
}

// The destroy event comes before the window destroys its children, so the canvas is whole.
void OpenGLRenderer::OnParentDestroyed(wxWindowDestroyEvent& event) {
  event.Skip();
  if (event.GetEventObject() != m_parent) return;  // a child's, passed on
  ReleaseGLObjects();
  ReleaseCanvas();
  m_parentSize.reset();
  m_parent = nullptr;
}

// The shared canvas outlives its renderer, but not its window: that goes with the parent's
// native window, which may be destroyed at any time from now on. So neither canvas stays the
// current drawable. Left current, the next clean-up of another tile would make it current
// again on its way out (restoring what was current), the window system would ask the X server
// about the window that is gone, and the toolkit ends the program on that error.
void OpenGLRenderer::ReleaseCanvas() {
  if (!m_canvas) return;
  ReleaseIfCurrentOn(*m_canvas);
  if (m_canvas == m_sharedCanvas) {
    m_canvas->Hide();
    m_parent->RemoveChild(m_canvas);
  } else {
    m_canvas->Destroy();
  }
  m_canvas = nullptr;
}

// ---- Context, viewport and projection --------------------------------------------------------

void OpenGLRenderer::SetCurrent() {
  static InternalGLCanvas* current = nullptr;
  if (!m_canvas) return;
  if (current) {
    if (!m_canvas->IsShown()) return;
    if (!m_alwaysSetCurrent && m_canvas == current) return;
  }
  current = m_canvas;
  MakeContextCurrent();
}

// A failed switch leaves the previous context current, which may be another tile's: this
// renderer's calls would draw into that tile and make or fill textures there. So no context
// is left current instead (every GL call then does nothing), and until a switch succeeds the
// renderer lends no frame buffer and draws nothing.
void OpenGLRenderer::MakeContextCurrent() {
  const bool failed = GLFaults::IsSet(GLFault::MakeCurrent) || !m_context->SetCurrent(*m_canvas);
  if (failed) {
    MakeNoContextCurrent();
    if (!m_makeCurrentFailed) {
      LogVerbose(kSource, "SetCurrent", "OpenGL Error - Failed to make the context current");
    }
  }
  m_makeCurrentFailed = failed;
}

// Without a canvas there is nothing that could be ready; a canvas whose context could not be
// made current is not ready either, so nothing is drawn or swapped through it.
bool OpenGLRenderer::IsContextReady(bool check) {
  if (!check) return true;
  return m_canvas && m_canvas->IsShown() && !m_makeCurrentFailed;
}

bool OpenGLRenderer::HasContext() { return m_canvas && m_context; }

bool OpenGLRenderer::GetIsSupported() { return m_isSupported; }

// The parent's own size handlers still run; a parent of no size leaves the canvas as it is.
void OpenGLRenderer::OnSize(wxSizeEvent& event) {
  event.Skip();
  if (!m_canvas) return;
  const wxSize size = m_parent->GetClientSize();
  if (size.x <= 0 || size.y <= 0) return;
  SetCurrent();
  m_canvas->SetClientSize(size.x, size.y);
}

void OpenGLRenderer::UpdateViewport(wxRect rect) {
  const wxRect& record = m_isSharedContext ? m_sharedViewport : m_viewport;
  if (record == rect) return;
  glViewport(rect.x, rect.y, rect.width, rect.height);
  m_viewport = rect;
  if (m_isSharedContext) m_sharedViewport = rect;
  // A new viewport always reloads the projection, even for the same rectangle.
  m_ortho.width = 0;
  m_ortho.height = 0;
}

// Pixel coordinates with the origin at the top left and y growing downwards; the last column
// and row map to the right and bottom edges (width - 1, not width).
void OpenGLRenderer::UpdateOrtho(wxRect rect) {
  if (m_ortho == rect) return;
  glMatrixMode(GL_PROJECTION);
  glLoadIdentity();
  gluOrtho2D(static_cast<GLdouble>(rect.x), static_cast<GLdouble>(rect.x + rect.width - 1),
             static_cast<GLdouble>(rect.y + rect.height - 1), static_cast<GLdouble>(rect.y));
  glMatrixMode(GL_MODELVIEW);
  glLoadIdentity();
  m_ortho = rect;
}

// Zeroing the viewport records makes the next UpdateViewport call glViewport for certain.
void OpenGLRenderer::InitGL() {
  EnableVSync(false);
  m_sharedViewport = wxRect(0, 0, 0, 0);
  m_viewport = wxRect(0, 0, 0, 0);
  glDisable(GL_DEPTH_TEST);
  glDisable(GL_LIGHTING);
}

// No swap-interval function is bound on this platform, so vertical sync stays as the driver
// has it and the request is only logged.
void OpenGLRenderer::EnableVSync(bool enable) {
  LogVerbose(kSource, "EnableVSync",
             wxString::Format("Unable to %s vsync. Swap interval function not found.",
                              enable ? "enable" : "disable"));
}

// ---- Draw bracket ----------------------------------------------------------------------------

// Nothing is drawn into a hidden canvas, and GL is set up only once it is first shown. A context
// that failed to be made current is tried again here, and nothing is drawn while it fails.
void OpenGLRenderer::OnBeforeDraw(wxDC*) {
  if (!m_canvas || !m_canvas->IsShown()) return;
  SetCurrent();
  if (m_makeCurrentFailed) return;
  if (!m_isGLInitialized) {
    InitGL();
    m_isGLInitialized = true;
  }
  MirrorParentToolTip();
  const wxSize size = GetRenderClientSize();
  UpdateViewport(wxRect(0, 0, size.x, size.y));
  UpdateOrtho(wxRect(0, 0, size.x, size.y));
  ClearToParentBackground();
}

// A paint that raised a GL error says so in the log (and goes on: the next paint starts afresh).
void OpenGLRenderer::OnAfterDraw(wxDC*) {
  if (IsContextReady(true)) LogPendingGLError("OnAfterDraw", "Failed to draw the frame");
  SwapBuffers();
}

// Swapping a window that no context of this process was made current on is an X error, which
// the toolkit takes as fatal.
void OpenGLRenderer::SwapBuffers() {
  if (!m_canvas || !m_canvas->IsShown() || m_makeCurrentFailed) return;
  if (m_isDoubleBuffered) {
    m_canvas->SwapBuffers();
  } else {
    glFlush();
  }
}

// The canvas covers the tile, so the tile's tooltip has to live on the canvas too.
void OpenGLRenderer::MirrorParentToolTip() {
  const wxToolTip* parentTip = m_parent->GetToolTip();
  const wxToolTip* canvasTip = m_canvas->GetToolTip();
  if (parentTip) {
    if (!canvasTip || canvasTip->GetTip() != parentTip->GetTip()) {
      m_canvas->SetToolTip(parentTip->GetTip());
    }
  } else if (canvasTip) {
    m_canvas->UnsetToolTip();
  }
}

void OpenGLRenderer::ClearToParentBackground() {
  const wxColour background = m_parent->GetBackgroundColour();
  glClearColor(Unit(background.Red()), Unit(background.Green()), Unit(background.Blue()),
               Unit(background.Alpha()));
  glClear(GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT);
}

bool OpenGLRenderer::ClearFrame() {
  if (!m_textures.empty()) WithShareGroupCurrent([this] { DeleteTextures(); });
  return RendererBase::ClearFrame();
}

// A delete acts on the current context's objects: with none current the names would stay in the
// share group for good, with a host's own context current that context's objects of the same
// names would go instead. SetCurrent will not do, as it leaves a hidden canvas alone (and a
// tile's canvas is hidden while the software back-end stands in for it), so the renderer's
// context is made current on its canvas, shown or not, and what was current before comes back.
void OpenGLRenderer::WithShareGroupCurrent(const std::function<void()>& release) {
  if (!m_context || !m_canvas) {
    release();  // no context was ever made, so no name either: only the lists go
    return;
  }
  const CurrentContextScope current(*m_context, *m_canvas);
  release();
}

// ---- Frame upload: textures, pixel buffers and programs --------------------------------------

namespace {

// One plane's texture, relative to the texture size (tw, th) of plane 0.
struct PlaneShape {
  int widthDivisor;  // texture tw / widthDivisor x th / heightDivisor
  int heightDivisor;
  int internalFormat;
  GLenum format;
  int bytesPerTexel;
  int bufferNumerator;  // pixel buffer of tw * th * numerator / denominator bytes
  int bufferDenominator;
  bool rectangular;
};

// Textures, program and client-memory size of a pixel format that has textures.
struct TextureLayout {
  int format;
  int planes;
  PlaneShape shapes[3];
  const char* const* program;  // null: drawn without a program
  int clientNumerator;         // client buffer of tw * th * numerator / denominator bytes
  int clientDenominator;
};

constexpr PlaneShape kLuma = {1, 1, 1, GL_LUMINANCE, 1, 1, 1, false};
constexpr PlaneShape kChroma420 = {2, 2, 1, GL_LUMINANCE, 1, 1, 4, false};
constexpr PlaneShape kChroma422 = {2, 1, 1, GL_LUMINANCE, 1, 1, 2, false};
constexpr PlaneShape kChromaPairs = {2, 2, 2, GL_LUMINANCE_ALPHA, 2, 1, 2, false};
constexpr PlaneShape kPacked422 = {1, 1, 2, GL_LUMINANCE_ALPHA, 2, 2, 1, true};
constexpr PlaneShape kRgb = {1, 1, 3, GL_RGB, 3, 3, 1, false};
constexpr PlaneShape kBgr = {1, 1, 3, GL_BGR, 3, 3, 1, false};
constexpr PlaneShape kRgba = {1, 1, GL_RGBA, GL_RGBA, 4, 4, 1, false};

// A packed 4:2:2 texture holds one texel per pixel: luminance = Y, alpha = that pixel's chroma
// byte; its program picks U and V from the pair. NV12 reserves a whole 2 x tw x th of client
// memory although its planes need only 3/2 of that.
const TextureLayout kTextureLayouts[] = {
    {PIXEL_FORMAT_I420, 3, {kLuma, kChroma420, kChroma420}, &PSO_YUV, 3, 2},
    {PIXEL_FORMAT_YV12, 3, {kLuma, kChroma420, kChroma420}, &PSO_YUV, 3, 2},
    {PIXEL_FORMAT_YUV422P, 3, {kLuma, kChroma422, kChroma422}, &PSO_YUV, 2, 1},
    {PIXEL_FORMAT_NV12, 2, {kLuma, kChromaPairs}, &PSO_NV12, 2, 1},
    {PIXEL_FORMAT_YUYV, 1, {kPacked422}, &PSO_YUYV, 2, 1},
    {PIXEL_FORMAT_UYVY, 1, {kPacked422}, &PSO_UYVY, 2, 1},
    {PIXEL_FORMAT_RGB24, 1, {kRgb}, nullptr, 3, 1},
    {PIXEL_FORMAT_BGR24, 1, {kBgr}, nullptr, 3, 1},
    {PIXEL_FORMAT_RGBA32, 1, {kRgba}, nullptr, 4, 1},
};

// Null for a format without textures (unused codes, codes above 23).
const TextureLayout* LayoutOf(int format) {
  for (const TextureLayout& layout : kTextureLayouts) {
    if (layout.format == format) return &layout;
  }
  return nullptr;
}

int PlaneCount(const TextureLayout* layout) { return layout ? layout->planes : 0; }

wxSize PlaneSize(const PlaneShape& shape, wxSize textureSize) {
  return wxSize(textureSize.x / shape.widthDivisor, textureSize.y / shape.heightDivisor);
}

// Bytes of width x height texels times numerator / denominator, saturated at the largest int
// (a texture that large is refused anyway).
int TextureBytes(wxSize size, int numerator, int denominator) {
  const long long bytes = static_cast<long long>(size.x) * size.y * numerator / denominator;
  return static_cast<int>(std::min<long long>(bytes, INT_MAX));
}

int PowerOfTwoAtLeast(int size) {
  int power = 2;
  while (power < size && power <= INT_MAX / 2) power *= 2;
  return power;
}

// The widest row alignment (4, 2 or 1) that divides the row's texel count.
GLint UnpackAlignment(int width) {
  GLint alignment = 4;
  while (alignment > 1 && width % alignment != 0) alignment /= 2;
  return alignment;
}

// Logs the pending GL error, if any, as "OpenGL Error - <description>: <GLU text> (<number>)";
// returns whether there was one.
bool LogPendingGLError(const char* function, const char* description) {
  const GLenum error = glGetError();
  if (error == GL_NO_ERROR) return false;
  LogVerbose(kSource, function,
             wxString::Format("OpenGL Error - %s: %s (%d)", description,
                              reinterpret_cast<const char*>(gluErrorString(error)),
                              static_cast<int>(error)));
  return true;
}

// A pixel-unpack buffer bound for as long as this lives.
class BoundUnpackBuffer {
 public:
  explicit BoundUnpackBuffer(GLuint buffer) : m_gl(GLEntryPoints::Get()) {
    m_gl.BindBuffer(GL_PIXEL_UNPACK_BUFFER, buffer);
  }
  ~BoundUnpackBuffer() { m_gl.BindBuffer(GL_PIXEL_UNPACK_BUFFER, 0); }
  BoundUnpackBuffer(const BoundUnpackBuffer&) = delete;
  BoundUnpackBuffer& operator=(const BoundUnpackBuffer&) = delete;

  // A mapping drill gets nothing, as from a driver out of mappable memory.
  unsigned char* MapWriteOnly() const {
    if (GLFaults::IsSet(GLFault::PixelBufferMap)) return nullptr;
    return static_cast<unsigned char*>(m_gl.MapBuffer(GL_PIXEL_UNPACK_BUFFER, GL_WRITE_ONLY));
  }
  void Unmap() const { m_gl.UnmapBuffer(GL_PIXEL_UNPACK_BUFFER); }

 private:
  const GLEntryPoints& m_gl;
};

// A freshly made GL name, deleted at the end of the scope unless it was released to an owner.
class PendingName {
 public:
  using Deleter = void (*)(GLsizei count, const GLuint* names);
  PendingName(GLuint name, Deleter deleter) : m_name(name), m_deleter(deleter) {}
  ~PendingName() {
    if (m_name) m_deleter(1, &m_name);
  }
  PendingName(const PendingName&) = delete;
  PendingName& operator=(const PendingName&) = delete;

  GLuint Get() const { return m_name; }
  GLuint Release() { return std::exchange(m_name, 0); }

 private:
  GLuint m_name;
  Deleter m_deleter;
};

GLuint TakeLast(std::vector<unsigned int>& names) {
  const GLuint name = names.back();
  names.pop_back();
  return name;
}

constexpr size_t kMaxProgramFileBytes = 8000;

}  // namespace

bool OpenGLRenderer::IsPixelFormatSupported(int format) {
  switch (format) {
    case PIXEL_FORMAT_I420:
    case PIXEL_FORMAT_YUV422P:
    case PIXEL_FORMAT_NV12:
    case PIXEL_FORMAT_YV12: return m_isShaderSupported;
    case PIXEL_FORMAT_YUYV:
    case PIXEL_FORMAT_UYVY: return m_isTextRectSupported && m_isShaderSupported;
    case PIXEL_FORMAT_RGB24:
    case PIXEL_FORMAT_RGBA32: return true;
    case PIXEL_FORMAT_BGR24: return m_isBgrSupported;
    default: return false;
  }
}

unsigned int OpenGLRenderer::GetColorFormat(int format) {
  switch (format) {
    case PIXEL_FORMAT_I420:
    case PIXEL_FORMAT_YUV422P:
    case PIXEL_FORMAT_NV12:
    case PIXEL_FORMAT_YV12: return GL_LUMINANCE;
    case PIXEL_FORMAT_YUYV:
    case PIXEL_FORMAT_UYVY: return GL_LUMINANCE_ALPHA;
    case PIXEL_FORMAT_RGB24: return GL_RGB;
    case PIXEL_FORMAT_BGR24: return GL_BGR;
    case PIXEL_FORMAT_RGBA32: return GL_RGBA;
    default: return 0;
  }
}

bool OpenGLRenderer::IsRectangularFormat(int format) {
  return format == PIXEL_FORMAT_YUYV || format == PIXEL_FORMAT_UYVY;
}

bool OpenGLRenderer::IsHardwareDecompSupported() { return true; }

// The width always grows, by 1 to 8, even when it is a multiple of 8 already (640 gives 648):
// every texture and every lent pitch of this renderer has had that margin, and it stays. The
// height is padded only up to a power of two, and only without non-power-of-two support.
wxSize OpenGLRenderer::DetermineTextureSize(int width, int height) {
  // Summed wider and clamped: an image's width near the int limit must not overflow here (the
  // proxy then refuses the texture).
  const long long padded = static_cast<long long>(width) + 8 - width % 8;
  const int paddedWidth = static_cast<int>(std::min<long long>(padded, INT_MAX));
  if (m_isNonPow2Supported) return wxSize(paddedWidth, height);
  return wxSize(PowerOfTwoAtLeast(paddedWidth), PowerOfTwoAtLeast(height));
}

// A tile scrolled partly out of view cannot be drawn by GL (the canvas would paint over its
// scrolled container), so the facade falls back to software for it.
bool OpenGLRenderer::IsModeSupported(int width, int height, int format) {
  if (width > m_maxTextureSize.x || height > m_maxTextureSize.y) return false;
  if (!IsInsideScrolledWindows()) return false;
  return RendererBase::IsModeSupported(width, height, format);
}

// The parent's screen rectangle inflated by its client size less its full size (which pulls
// it in by the borders), against every scrolled window from the parent itself to the top.
// Asking for a screen position is a round trip to the X server, so nothing is asked unless a
// scrolled window is around the tile at all (the common tile has none, and this runs for
// every frame).
bool OpenGLRenderer::IsInsideScrolledWindows() const {
  if (!HasScrolledAncestor()) return true;
  const wxSize full = m_parent->GetSize();
  const wxSize client = m_parent->GetClientSize();
  wxRect area(m_parent->GetScreenPosition(), full);
  area.Inflate(client.x - full.x, client.y - full.y);
  for (const wxWindow* window = m_parent; window; window = window->GetParent()) {
    if (!window->IsKindOf(wxCLASSINFO(wxScrolledWindow))) continue;
    const wxRect scrolled(window->GetScreenPosition(), window->GetSize());
    if (area.y < scrolled.y || area.x < scrolled.x || scrolled.GetBottom() < area.GetBottom() ||
        scrolled.GetRight() < area.GetRight()) {
      return false;
    }
  }
  return true;
}

bool OpenGLRenderer::HasScrolledAncestor() const {
  for (const wxWindow* window = m_parent; window; window = window->GetParent()) {
    if (window->IsKindOf(wxCLASSINFO(wxScrolledWindow))) return true;
  }
  return false;
}

// The proxy refuses silently as a rule, so a refusal is logged only when GL reports an error.
// With pixel-buffer support a texture comes with its buffer or not at all: the frame path pairs
// buffers with planes by index, and a missing one would give the planes after it the wrong
// buffers (and the last plane none).
bool OpenGLRenderer::CreateTexture(int width, int height, int internalFormat, unsigned int format,
                                   int bufferSize, bool rectangular) {
  DrainGLErrors();
  if (!ProxyTextureFits(internalFormat, width, height, format)) {
    LogPendingGLError("CreateTexture", "Failed to create texture. Texture size too big.");
    return false;
  }
  const GLenum target = rectangular ? GL_TEXTURE_RECTANGLE_ARB : GL_TEXTURE_2D;
  GLuint name = 0;
  glGenTextures(1, &name);
  PendingName texture(name, glDeleteTextures);
  glBindTexture(target, texture.Get());
  glTexParameteri(target, GL_TEXTURE_MIN_FILTER, GL_NEAREST);
  glTexParameteri(target, GL_TEXTURE_MAG_FILTER, GL_NEAREST);
  glTexParameteri(target, GL_TEXTURE_WRAP_S, GL_CLAMP);
  glTexParameteri(target, GL_TEXTURE_WRAP_T, GL_CLAMP);
  glTexImage2D(target, 0, internalFormat, width, height, 0, format, GL_UNSIGNED_BYTE, nullptr);
  if (LogPendingGLError("CreateTexture", "Failed to create texture")) return false;
  if (m_isPixelBufferSupported && !CreatePixelBuffer(bufferSize)) return false;
  m_textures.push_back(texture.Release());
  m_textureTargets[m_textures.back()] = target;
  return true;
}

unsigned int OpenGLRenderer::GeneratePixelBufferName() {
  GLuint buffer = 0;
  GLEntryPoints::Get().GenBuffers(1, &buffer);
  return buffer;
}

bool OpenGLRenderer::CreatePixelBuffer(int bufferSize) {
  const GLEntryPoints& gl = GLEntryPoints::Get();
  PendingName buffer(GeneratePixelBufferName(), gl.DeleteBuffers);
  if (!buffer.Get()) {
    LogPendingGLError("CreateTexture", "Failed to create pixel buffer");
    return false;
  }
  {
    const BoundUnpackBuffer bound(buffer.Get());
    gl.BufferData(GL_PIXEL_UNPACK_BUFFER, bufferSize, nullptr, GL_STREAM_DRAW);
  }
  if (LogPendingGLError("CreateTexture", "Failed to create pixel buffer")) return false;
  m_pixelBuffers.push_back(buffer.Release());
  return true;
}

// The layout follows the renderer's current pixel format, which the frame path has just set
// to `format`.
bool OpenGLRenderer::CreateTextures(int width, int height, int /*format*/) {
  const wxSize size = DetermineTextureSize(width, height);
  if (!m_textures.empty()) {
    if (size == m_textureSize && m_texturePixelFormat == m_pixelFormat) return true;
    DeleteTextures();
  }
  m_textureSize = size;
  m_texturePixelFormat = m_pixelFormat;
  const TextureLayout* layout = LayoutOf(m_pixelFormat);
  if (!layout) return true;
  for (int plane = 0; plane < layout->planes; ++plane) {
    const PlaneShape& shape = layout->shapes[plane];
    const int bufferSize = TextureBytes(size, shape.bufferNumerator, shape.bufferDenominator);
    const wxSize planeSize = PlaneSize(shape, size);
    if (!CreateTexture(planeSize.x, planeSize.y, shape.internalFormat, shape.format, bufferSize,
                       shape.rectangular)) {
      DeleteTextures();
      return false;
    }
  }
  const char* program = layout->program ? *layout->program : nullptr;
  if (program && !LoadShader(program, static_cast<int>(std::strlen(program)))) {
    DeleteTextures();
    return false;
  }
  return true;
}

void OpenGLRenderer::DeleteTextures() {
  for (const unsigned int texture : m_textures) m_textureTargets.erase(texture);
  DeleteNames(m_textures, glDeleteTextures);
  const GLEntryPoints& functions = GLEntryPoints::Get();
  DeleteNames(m_pixelBuffers, functions.DeleteBuffers);
  DeleteNames(m_programs, functions.DeleteProgramsARB);
}

unsigned int OpenGLRenderer::GetPixelBufferId(unsigned long index) {
  return index < m_pixelBuffers.size() ? m_pixelBuffers[index] : 0;
}

// A frame this renderer cannot lay out in textures is refused before anything is set up: a side
// below 1 would give empty or negative pitches and plane offsets, a side beyond the texture limit
// no texture, and byte counts past an int no buffer of the right size.
bool OpenGLRenderer::CanLayOut(int width, int height, int format) {
  if (width < 1 || height < 1) return false;
  if (width > m_maxTextureSize.x || height > m_maxTextureSize.y) return false;
  const TextureLayout* layout = LayoutOf(format);
  if (!layout) return true;
  const wxSize size = DetermineTextureSize(width, height);
  const long long texels = static_cast<long long>(size.x) * size.y;
  long long bytes = texels * layout->clientNumerator / layout->clientDenominator;
  for (int plane = 0; plane < layout->planes; ++plane) {
    const PlaneShape& shape = layout->shapes[plane];
    bytes = std::max(bytes, texels * shape.bufferNumerator / shape.bufferDenominator);
  }
  return bytes <= INT_MAX;
}

bool OpenGLRenderer::GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                                    int* pitches) {
  if (!CanLayOut(width, height, format)) return false;
  // The textures are this renderer's: made and filled in its own context. Another tile's
  // context shares the names, but Mesa's rasteriser crashes drawing a texture that a second
  // context re-specified or filled meanwhile. Without the context no buffer is lent at all.
  SetCurrent();
  if (m_makeCurrentFailed) return false;
  if (!RendererBase::GetFrameBuffer(width, height, format, planes, pitches)) return false;
  // Three bytes, not three entries, as this renderer has always cleared them; the base has
  // zeroed every entry already and every entry that matters is written below.
  std::memset(planes, 0, 3);
  std::memset(pitches, 0, 3);
  if (!CreateTextures(width, height, format)) return false;
  SetPitches(pitches);
  if (!m_pixelBuffers.empty()) return MapPixelBuffers(planes, pitches);
  LendClientMemory(height, planes, pitches);
  return true;
}

// A plane's pitch is its texture's row: the decoder writes the texture layout directly.
void OpenGLRenderer::SetPitches(int* pitches) {
  const TextureLayout* layout = LayoutOf(m_pixelFormat);
  for (int plane = 0; plane < PlaneCount(layout); ++plane) {
    const PlaneShape& shape = layout->shapes[plane];
    pitches[plane] = m_textureSize.x / shape.widthDivisor * shape.bytesPerTexel;
  }
}

// YV12 carries V before U; exchanging the mappings makes the decoder write U into the buffer
// of texture 1, which the planar program reads as U. FlushFrameBuffer exchanges them back.
bool OpenGLRenderer::MapPixelBuffers(unsigned char** planes, int* pitches) {
  for (size_t plane = 0; plane < m_pixelBuffers.size(); ++plane) {
    planes[plane] = BoundUnpackBuffer(m_pixelBuffers[plane]).MapWriteOnly();
    if (!planes[plane]) {
      CancelFrameBuffer(planes, pitches);
      return false;
    }
  }
  if (m_pixelFormat == PIXEL_FORMAT_YV12) std::swap(planes[1], planes[2]);
  return true;
}

void OpenGLRenderer::LendClientMemory(int height, unsigned char** planes, const int* pitches) {
  const TextureLayout* layout = LayoutOf(m_pixelFormat);
  const size_t texels = static_cast<size_t>(m_textureSize.x) * m_textureSize.y;
  ResizeBuffer(layout ? texels * layout->clientNumerator / layout->clientDenominator : 0);
  LayOutClientPlanes(height, planes, pitches);
}

// The planes follow each other at the offsets the decoder's own layout of a `height`-row frame
// has (not the texture height); YV12 keeps its plane order here and is exchanged at flush.
void OpenGLRenderer::LayOutClientPlanes(int height, unsigned char** planes, const int* pitches) {
  const TextureLayout* layout = LayoutOf(m_pixelFormat);
  planes[0] = m_frameBuffer.data();
  for (int plane = 1; plane < PlaneCount(layout); ++plane) {
    // height x pitch, divided after the product: an odd height leaves half a row of room.
    const ptrdiff_t bytes = static_cast<ptrdiff_t>(height) * pitches[plane - 1] /
                            layout->shapes[plane - 1].heightDivisor;
    planes[plane] = planes[plane - 1] + bytes;
  }
}

// The whole texture is uploaded each time; what lies beyond the video is never shown. A caller
// may hand back no arrays at all, as the other back-ends allow: the planes are then the ones
// this renderer lent, laid out again from its own frame buffer.
bool OpenGLRenderer::FlushFrameBuffer(unsigned char** planes, int* pitches) {
  SetCurrent();  // the upload runs in the context that made the textures, as GetFrameBuffer
  unsigned char* lent[3] = {};
  int lentPitches[3] = {};
  if (!planes || !pitches) {
    planes = lent;
    pitches = lentPitches;
    if (m_pixelBuffers.empty() && !m_frameBuffer.empty()) {
      SetPitches(lentPitches);
      LayOutClientPlanes(m_height, lent, lentPitches);
    }
  }
  if (m_pixelFormat == PIXEL_FORMAT_YV12) std::swap(planes[1], planes[2]);
  DrainGLErrors();  // an upload answers only for its own errors
  if (m_pixelBuffers.empty()) {
    UploadFromClientMemory(planes);
  } else {
    UploadFromPixelBuffers();
  }
  glFlush();
  if (UploadFailed()) return false;
  return RendererBase::FlushFrameBuffer(planes, pitches);
}

// A frame whose upload raised a GL error is not taken: the textures may hold nothing or half a
// picture, and the facade falls back to software rather than show it. An upload drill raises
// a real error here (an unpack alignment of 3 is GL_INVALID_VALUE).
bool OpenGLRenderer::UploadFailed() {
  if (GLFaults::IsSet(GLFault::ErrorAfterUpload)) glPixelStorei(GL_UNPACK_ALIGNMENT, 3);
  return LogPendingGLError("FlushFrameBuffer", "Failed to upload the frame");
}

void OpenGLRenderer::UploadPlane(unsigned int texture, int width, int height, unsigned int format,
                                 const unsigned char* data) {
  glBindTexture(m_textureTargets[texture], texture);
  glPixelStorei(GL_UNPACK_ALIGNMENT, UnpackAlignment(width));
  glTexSubImage2D(m_textureTargets[texture], 0, 0, 0, width, height, format, GL_UNSIGNED_BYTE,
                  data);
}

// The whole texture of the plane, in the plane's GL format.
void OpenGLRenderer::UploadFramePlane(size_t plane, const unsigned char* data) {
  const PlaneShape& shape = LayoutOf(m_pixelFormat)->shapes[plane];
  const wxSize size = PlaneSize(shape, m_textureSize);
  UploadPlane(m_textures[plane], size.x, size.y, shape.format, data);
}

void OpenGLRenderer::UploadFromClientMemory(unsigned char** planes) {
  const size_t count = std::min<size_t>(m_textures.size(), PlaneCount(LayoutOf(m_pixelFormat)));
  for (size_t plane = 0; plane < count; ++plane) {
    if (planes[plane]) UploadFramePlane(plane, planes[plane]);
  }
}

// Each upload reads from offset 0 of the plane's own buffer, with no copy through client memory.
void OpenGLRenderer::UploadFromPixelBuffers() {
  const size_t count = std::min<size_t>(m_pixelBuffers.size(), PlaneCount(LayoutOf(m_pixelFormat)));
  for (size_t plane = 0; plane < count; ++plane) {
    const BoundUnpackBuffer bound(m_pixelBuffers[plane]);
    bound.Unmap();
    UploadFramePlane(plane, nullptr);
    glBindTexture(m_textureTargets[m_textures[plane]], 0);
  }
}

// Unmapping a buffer that was never mapped (after a mapping failed part-way) raises an error
// that means nothing; it is discarded so that the next texture creation does not take it for
// its own.
void OpenGLRenderer::CancelFrameBuffer(unsigned char** planes, int* pitches) {
  for (const unsigned int buffer : m_pixelBuffers) BoundUnpackBuffer(buffer).Unmap();
  glGetError();
  RendererBase::CancelFrameBuffer(planes, pitches);
}

// With a buffer, the data goes through a fresh mapping of it; when that mapping fails (the
// buffer is already mapped, as DoCreateImage leaves it) the copy is skipped and the upload
// carries what the earlier mapping received.
void OpenGLRenderer::UpdateTexture(unsigned int texture, unsigned int buffer, int width, int height,
                                   unsigned int format, unsigned char* data, int size) {
  if (!buffer) {
    UploadPlane(texture, width, height, format, data);
    return;
  }
  const BoundUnpackBuffer bound(buffer);
  unsigned char* mapping = bound.MapWriteOnly();
  if (mapping) std::memcpy(mapping, data, static_cast<size_t>(size));
  bound.Unmap();
  glGetError();  // the failed second mapping, if that is what happened
  UploadPlane(texture, width, height, format, nullptr);
}

// The frame never comes this way: without a hardware surface the call fails once the textures
// exist, and the facade takes the copying road.
bool OpenGLRenderer::BeginHardwareImage(int width, int height, int format,
                                        HardwareImageInfo& info) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  if (!CanLayOut(width, height, format)) return false;
  if (!RendererBase::GetFrameBuffer(width, height, format, planes, pitches)) return false;
  if (!CreateTextures(width, height, format)) return false;
  if (!m_hardwareSurface || m_textures.empty()) return false;
  info.texture = m_textures.front();
  info.surface = m_textureTargets[m_textures.front()];
  info.width = width;
  info.height = height;
  return true;
}

void OpenGLRenderer::EndHardwareImage(HardwareImageInfo&) {
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  RendererBase::FlushFrameBuffer(planes, pitches);
}

// Without fragment-program support there is nothing to compile with.
bool OpenGLRenderer::LoadShader(const char* text, int length) {
  if (!m_isShaderSupported) return false;
  DrainGLErrors();
  const GLEntryPoints& gl = GLEntryPoints::Get();
  GLuint name = 0;
  gl.GenProgramsARB(1, &name);
  if (!name) {
    LogPendingGLError("LoadShader", "Failed to create shader");
    return false;
  }
  PendingName program(name, gl.DeleteProgramsARB);
  gl.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, name);
  if (GLFaults::IsSet(GLFault::ProgramCompile)) {
    // A compile drill hands the driver a program it must reject, so the failure is GL's own.
    static const char kBroken[] = "!!ARBfp1.0\nNOT_AN_INSTRUCTION result.color;\nEND\n";
    text = kBroken;
    length = static_cast<int>(sizeof(kBroken) - 1);
  }
  gl.ProgramStringARB(GL_FRAGMENT_PROGRAM_ARB, GL_PROGRAM_FORMAT_ASCII_ARB, length, text);
  if (LogPendingGLError("LoadShader", "Failed to create shader")) return false;
  gl.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, 0);
  m_programs.push_back(program.Release());
  return true;
}

// The way to try a program from disk; nothing in the library calls it. A missing file is
// reported on standard output, not in the log, and longer files are cut at 8000 bytes. The
// text read is terminated by a zero although its length is passed on: Mesa reads program
// texts up to their terminating zero, whatever length it is given.
bool OpenGLRenderer::LoadShader(const char* path) {
  const std::unique_ptr<FILE, int (*)(FILE*)> file(std::fopen(path, "r"), std::fclose);
  if (!file) {
    std::printf("Failed to shader open file %s.", path);
    return false;
  }
  char text[kMaxProgramFileBytes + 1];
  const size_t length = std::fread(text, 1, kMaxProgramFileBytes, file.get());
  text[length] = '\0';
  return LoadShader(text, static_cast<int>(length));
}

// ---- Frame and image drawing -----------------------------------------------------------------

namespace {

// A quad over `destination` in the renderer's pixel coordinates, from its first to its last
// pixel, each corner preceded by its texture coordinate (given to `coordinate`).
template <typename Coordinate>
void TexturedQuad(const wxRect& destination, float left, float top, float right, float bottom,
                  Coordinate coordinate) {
  // In double: a destination near the int limits must not overflow its far edge.
  const double x0 = destination.x;
  const double y0 = destination.y;
  const double x1 = x0 + destination.width - 1;
  const double y1 = y0 + destination.height - 1;
  glBegin(GL_QUADS);
  coordinate(left, top);
  glVertex2d(x0, y0);
  coordinate(right, top);
  glVertex2d(x1, y0);
  coordinate(right, bottom);
  glVertex2d(x1, y1);
  coordinate(left, bottom);
  glVertex2d(x0, y1);
  glEnd();
}

GLuint FirstOf(const std::vector<unsigned int>& names) { return names.empty() ? 0 : names[0]; }

}  // namespace

// Without a texture set the background cleared by OnBeforeDraw stays.
void OpenGLRenderer::DrawFrame(wxDC*) {
  if (m_textures.empty()) return;
  wxRect destination;
  wxRect source;
  GetSubImageRect(destination, source, false);
  PositionTexture(source, destination, IsRectangularFormat(m_pixelFormat));
}

// The video runs to the last texel's index, not one past it, which is how frames have always
// been placed; images (DrawImage) run one past.
OpenGLRenderer::TextureRect OpenGLRenderer::SourceCoordinates(wxRect source, bool rectangular) {
  TextureRect coordinates = {static_cast<float>(source.x), static_cast<float>(source.y),
                             static_cast<float>(source.x + source.width - 1),
                             static_cast<float>(source.y + source.height - 1)};
  if (rectangular) return coordinates;
  const float width = static_cast<float>(m_textureSize.x);
  const float height = static_cast<float>(m_textureSize.y);
  return {coordinates.left / width, coordinates.top / height, coordinates.right / width,
          coordinates.bottom / height};
}

void OpenGLRenderer::PositionTexture(wxRect source, wxRect destination, bool rectangular) {
  const TextureRect c = SourceCoordinates(source, rectangular);
  if (m_textures.size() < 2) {
    PositionTexture(FirstOf(m_textures), FirstOf(m_programs), c.left, c.top, c.right, c.bottom,
                    destination);
  } else {
    PositionYV12Texture(c.left, c.top, c.right, c.bottom, destination);
  }
}

void OpenGLRenderer::PositionTexture(float left, float top, float right, float bottom,
                                     wxRect destination) {
  PositionTexture(FirstOf(m_textures), FirstOf(m_programs), left, top, right, bottom, destination);
}

// The program argument only says whether to use one: the one bound is the renderer's first.
void OpenGLRenderer::PositionTexture(unsigned int texture, unsigned int program, float left,
                                     float top, float right, float bottom, wxRect destination) {
  SetActiveOverlayFont(nullptr);
  const GLEntryPoints& gl = GLEntryPoints::Get();
  if (program) {
    glEnable(GL_FRAGMENT_PROGRAM_ARB);
    gl.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, FirstOf(m_programs));
  }
  glMatrixMode(GL_TEXTURE);
  glLoadIdentity();
  glColor4f(1.0f, 1.0f, 1.0f, static_cast<float>(GetOpacity() / 255.0));
  const GLenum target = m_textureTargets[texture];
  glEnable(target);
  glBindTexture(target, texture);
  TexturedQuad(destination, left, top, right, bottom, glTexCoord2f);
  glLoadIdentity();
  glMatrixMode(GL_MODELVIEW);
  glDisable(target);
  if (program) {
    glDisable(GL_FRAGMENT_PROGRAM_ARB);
    gl.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, 0);
  }
}

// Multi-plane video is always drawn opaque (colour alpha 1, not the opacity), unlike the
// single-texture path. The planes share normalised coordinates, each chroma texture being
// sized in proportion to its plane. A set without a program is a logic error: the range-checked
// access throws.
void OpenGLRenderer::PositionYV12Texture(float left, float top, float right, float bottom,
                                         wxRect destination) {
  const GLEntryPoints& gl = GLEntryPoints::Get();
  glEnable(GL_FRAGMENT_PROGRAM_ARB);
  gl.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, m_programs.at(0));
  const GLenum units = static_cast<GLenum>(m_textures.size());
  for (GLenum unit = units; unit-- > 0;) {
    gl.ActiveTexture(GL_TEXTURE0 + unit);
    const GLenum target = m_textureTargets[m_textures[unit]];
    glEnable(target);
    glBindTexture(target, m_textures[unit]);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glColor4f(1.0f, 1.0f, 1.0f, 1.0f);
  }
  TexturedQuad(destination, left, top, right, bottom, [&gl, units](float s, float t) {
    for (GLenum unit = 0; unit < units; ++unit) gl.MultiTexCoord2f(GL_TEXTURE0 + unit, s, t);
  });
  for (GLenum unit = units; unit-- > 0;) {
    gl.ActiveTexture(GL_TEXTURE0 + unit);
    const GLenum target = m_textureTargets[m_textures[unit]];
    glBindTexture(target, m_textures[unit]);
    glMatrixMode(GL_TEXTURE);
    glLoadIdentity();
    glMatrixMode(GL_MODELVIEW);
    glLoadIdentity();
    glDisable(target);
  }
  glDisable(GL_FRAGMENT_PROGRAM_ARB);
  gl.BindProgramARB(GL_FRAGMENT_PROGRAM_ARB, 0);
}

// The image owns its texture (and pixel buffer) from here on; the texture's target stays in
// the map for DrawImage. With a pixel buffer the order of operations is deliberate: the buffer
// stays mapped while the pixels are copied in, and UpdateTexture's own mapping of it then
// fails, so its unmap ends this one and the upload carries the copied pixels.
IRendererImage* OpenGLRenderer::DoCreateImage(const wxImage& image) {
  SetActiveOverlayFont(nullptr);
  if (!image.IsOk()) return new OpenGLImage(this, 0, 0, wxDefaultSize, wxDefaultSize);
  const wxSize textureSize = DetermineTextureSize(image.GetWidth(), image.GetHeight());
  const int bytes = TextureBytes(textureSize, 4, 1);
  const size_t buffersBefore = m_pixelBuffers.size();
  if (!CreateTexture(textureSize.x, textureSize.y, GL_RGBA, GL_RGBA, bytes, false)) {
    return new OpenGLImage(this, 0, 0, wxDefaultSize, wxDefaultSize);
  }
  const GLuint texture = TakeLast(m_textures);
  GLuint buffer = 0;
  unsigned char* destination = nullptr;
  // Never the frame buffer: a frame may be lent out of it right now, and resizing it would
  // shrink it under the decoder's planes or move it away from them.
  std::vector<unsigned char> scratch;
  if (m_pixelBuffers.size() > buffersBefore) {
    buffer = TakeLast(m_pixelBuffers);
    destination = BoundUnpackBuffer(buffer).MapWriteOnly();
  } else {
    scratch.resize(static_cast<size_t>(bytes));
    destination = scratch.data();
  }
  if (destination) {
    CopyImage(image, destination, textureSize.x * 4, false);
    UpdateTexture(texture, buffer, textureSize.x, textureSize.y, GL_RGBA, destination, bytes);
  }
  return new OpenGLImage(this, texture, buffer, image.GetSize(), textureSize);
}

// Images run to one past their last texel (w / tw), unlike the video's last-texel coordinates;
// the quad still ends on the image's last pixel.
void OpenGLRenderer::DrawImage(wxDC*, IRendererImage* image, int x, int y) {
  const auto* glImage = dynamic_cast<const OpenGLImage*>(image);
  if (!glImage || !glImage->IsOk()) return;
  const wxSize size = glImage->GetSize();
  const wxSize textureSize = glImage->GetTextureSize();
  PositionTexture(glImage->GetTexture(), 0, 0.0f, 0.0f,
                  static_cast<float>(size.x) / static_cast<float>(textureSize.x),
                  static_cast<float>(size.y) / static_cast<float>(textureSize.y),
                  wxRect(x, y, size.x, size.y));
}

// Every bitmap draw makes and deletes a texture of its own. An invalid bitmap is ignored: the
// toolkit asserts on converting one.
void OpenGLRenderer::DrawBitmap(wxDC* dc, wxBitmap bitmap, int x, int y) {
  if (!bitmap.IsOk()) return;
  IRendererImage* image = CreateImage(bitmap.ConvertToImage());
  DrawImage(dc, image, x, y);
  DeleteImage(image);
}

// ---- Overlays --------------------------------------------------------------------------------

// Every overlay primitive is alpha-blended; blending is off again for the next frame.
// Every overlay primitive is alpha-blended. Fonts this renderer does not use in the pass are
// released at its end.
void OpenGLRenderer::DrawOverlays(wxDC* dc) {
  if (!IsContextReady(true)) return;
  ResetOverlayFonts();
  glEnable(GL_BLEND);
  glBlendFunc(GL_SRC_ALPHA, GL_ONE_MINUS_SRC_ALPHA);
  m_inOverlayPass = true;
  RendererBase::DrawOverlays(dc);
  m_inOverlayPass = false;
  glDisable(GL_BLEND);
  SetActiveOverlayFont(nullptr);
  CleanupOverlayFonts();
}

// Measuring may make glyphs, so the context must be current.
wxSize OpenGLRenderer::MeasureText(const wxString& text, wxFont font) {
  wxGLFont* glFont = GetOverlayFont(font);
  UseOverlayFont(glFont);
  float width = 0.0f;
  float height = 0.0f;
  glFont->MeasureText(text, width, height);
  return wxSize(static_cast<int>(width), static_cast<int>(height));
}

// One line of text with its top-left corner where the alignment puts it, on an optional box
// exactly the size of the text.
void OpenGLRenderer::DoDrawLabel(wxDC* dc, const wxString& text, wxFont font, wxColour colour,
                                 wxRect rect, int alignment, bool scale, wxColour background) {
  if (scale) font = GetScaledFont(font, text, wxPoint(rect.x, rect.y));
  wxGLFont* glFont = GetOverlayFont(font);
  UseOverlayFont(glFont);
  const wxPoint position = GetTextLocation(font, text, rect, alignment);
  if (background.IsOk()) {
    RendererBase::DrawRect(dc, wxRect(position, MeasureText(text, font)), background);
  }
  if (!SetColour(colour)) return;
  glEnable(GL_TEXTURE_2D);
  glFont->WriteText(text, position.x - 0.5f, position.y - 0.5f, 0.0f);
  glDisable(GL_TEXTURE_2D);
}

// The largest point size, from the font's own down to 1, at which the text fits the render client
// area from `origin` (RendererBase::FitFont). Measuring with glyph fonts would build an atlas for
// every size tried (a 300-point label in a small tile took seconds per paint), so the sizes are
// measured without glyphs: only the size finally used gets an atlas, when the label is drawn.
wxFont OpenGLRenderer::GetScaledFont(wxFont font, const wxString& text, wxPoint origin) {
  return FitFont(font, origin, GetRenderClientSize(), [&text](const wxFont& sized) {
    return wxGLFont::MeasureWithoutGlyphs(sized, text);
  });
}

// An invalid colour (wxNullColour) has no channels to ask for (the toolkit asserts on it); the
// primitive asking is then not drawn at all.
bool OpenGLRenderer::SetColour(const wxColour& colour) {
  if (!colour.IsOk()) return false;
  glColor4f(Unit(colour.Red()), Unit(colour.Green()), Unit(colour.Blue()), Unit(colour.Alpha()));
  return true;
}

// Corners half a pixel up and left of the integer corners, so the quad covers exactly the
// rectangle's pixels.
void OpenGLRenderer::DoDrawRect(wxDC*, wxRect rect, wxColour colour) {
  if (!SetColour(colour)) return;
  const double right = static_cast<double>(rect.x) + rect.width;
  const double bottom = static_cast<double>(rect.y) + rect.height;
  glLineWidth(1.0f);
  glBegin(GL_QUADS);
  VertexMinusHalf(rect.x, rect.y);
  VertexMinusHalf(right, rect.y);
  VertexMinusHalf(right, bottom);
  VertexMinusHalf(rect.x, bottom);
  glEnd();
}

// Thickness is made of nested one-pixel rings inside the rectangle, all in one loop: the
// rings are joined by a diagonal step at the top left and the loop closes from the innermost
// ring back to the outermost.
void OpenGLRenderer::DoDrawRectOutline(wxDC*, wxRect rect, wxColour colour, int width) {
  if (!SetColour(colour)) return;
  glLineWidth(1.0f);
  glBegin(GL_LINE_LOOP);
  const int rings = VisibleRings(rect, width);
  for (int ring = 0; ring < rings; ++ring) OutlineRing(rect, ring);
  glEnd();
}

// Thin lines are GL lines; wider ones are quads whose far edge is offset by the full width in
// the direction the table gives. The quad path leaves the GL line width alone.
void OpenGLRenderer::DoDrawLine(wxDC*, wxPoint from, wxPoint to, wxColour colour, int width) {
  if (!SetColour(colour)) return;
  if (width < 2) {
    glLineWidth(1.0f);
    glBegin(GL_LINES);
    VertexMinusHalf(from.x, from.y);
    VertexMinusHalf(to.x, to.y);
    glEnd();
    return;
  }
  const int row = Direction(from.y, to.y);
  const int column = Direction(from.x, to.x);
  const double offsetX = static_cast<double>(kLineOffsetX[row][column]) * width;
  const double offsetY = static_cast<double>(kLineOffsetY[row][column]) * width;
  glBegin(GL_QUADS);
  VertexMinusHalf(from.x, from.y);
  VertexMinusHalf(to.x, to.y);
  VertexMinusHalf(to.x + offsetX, to.y + offsetY);
  VertexMinusHalf(from.x + offsetX, from.y + offsetY);
  glEnd();
}

// The renderer's own event table stays empty: its one handler, OnSize, is bound on the parent
// at run time.
wxBEGIN_EVENT_TABLE(OpenGLRenderer, wxEvtHandler) wxEND_EVENT_TABLE()

    // ---- Overlay fonts --------------------------------------------------------------------------

    namespace {
  // The font a cache entry stands for: an invalid font measures and draws as the default one.
  wxFont UsableFont(const wxFont& font) { return font.IsOk() ? font : *wxNORMAL_FONT; }

}  // namespace

FontReference* OpenGLRenderer::GetFontReference(std::vector<FontReference*>& fonts, wxFont font) {
  const wxString description = UsableFont(font).GetNativeFontInfoDesc();
  for (FontReference* entry : fonts) {
    if (entry->description == description) return entry;
  }
  return nullptr;
}

void OpenGLRenderer::RemoveFontReference(std::vector<FontReference*>& fonts, wxFont font) {
  FontReference* entry = GetFontReference(fonts, font);
  if (!entry) return;
  fonts.erase(std::find(fonts.begin(), fonts.end(), entry));
  delete entry->font;
  delete entry->glFont;
  delete entry;
}

// The glyph font of the entry for `font` in `fonts`, counting one more use; without an entry,
// a new one with the glyph font `make` gives.
wxGLFont* OpenGLRenderer::UseFont(std::vector<FontReference*>& fonts, const wxFont& font,
                                  const std::function<wxGLFont*()>& make) {
  if (FontReference* entry = GetFontReference(fonts, font)) {
    ++entry->refCount;
    return entry->glFont;
  }
  wxGLFont* glFont = make();
  fonts.push_back(new FontReference{new wxFont(font), glFont, 1, font.GetNativeFontInfoDesc()});
  return glFont;
}

wxGLFont* OpenGLRenderer::CreateGLFont(wxFont font) {
  font = UsableFont(font);
  return UseFont(m_sharedFonts, font, [&font] { return new wxGLFont(font); });
}

wxGLFont* OpenGLRenderer::GetOverlayFont(wxFont font) {
  font = UsableFont(font);
  return UseFont(m_overlayFonts, font, [this, &font] { return CreateGLFont(font); });
}

// A glyph font's pages are deleted with it, so it goes with this renderer's context current.
void OpenGLRenderer::ReleaseGLFont(wxGLFont* glFont) {
  if (!glFont) return;
  if (glFont == m_activeOverlayFont) SetActiveOverlayFont(nullptr);
  FontReference* shared = GetFontReference(m_sharedFonts, glFont->GetFont());
  if (!shared) {
    WithShareGroupCurrent([glFont] { delete glFont; });
    return;
  }
  if (--shared->refCount == 0) {
    const wxFont font = *shared->font;  // the entry goes with the removal
    WithShareGroupCurrent([&font] { RemoveFontReference(m_sharedFonts, font); });
  }
}

// Only a pass ends the bracket it opens: a font used outside one (a host measuring a label before
// it paints) is used without a bracket, as nothing would close it, and the page it left bound
// would be taken for bound in every other renderer's context.
void OpenGLRenderer::UseOverlayFont(wxGLFont* glFont) {
  if (m_inOverlayPass) SetActiveOverlayFont(glFont);
}

void OpenGLRenderer::SetActiveOverlayFont(wxGLFont* glFont) {
  if (glFont == m_activeOverlayFont) return;
  if (m_activeOverlayFont) m_activeOverlayFont->End();
  m_activeOverlayFont = glFont;
  if (m_activeOverlayFont) m_activeOverlayFont->Begin();
}

void OpenGLRenderer::ResetOverlayFonts() {
  for (FontReference* entry : m_overlayFonts) entry->refCount = 0;
}

// The unused entries are collected first, so removing them does not disturb the scan. Each
// gives its borrowed glyph font back to the process-wide list before the entry goes.
void OpenGLRenderer::CleanupOverlayFonts() {
  std::vector<FontReference*> unused;
  for (FontReference* entry : m_overlayFonts) {
    if (entry->refCount == 0) unused.push_back(entry);
  }
  for (FontReference* entry : unused) {
    ReleaseGLFont(entry->glFont);
    entry->glFont = nullptr;
    const wxFont font = *entry->font;
    RemoveFontReference(m_overlayFonts, font);
  }
}
