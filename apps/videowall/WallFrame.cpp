// WallFrame: grid, menus, status bar, GUI tick and the screenshot run.
#include "WallFrame.h"

#include <algorithm>
#include <cstdio>

#include <wx/menu.h>
#include <wx/panel.h>
#include <wx/sizer.h>
#include <wx/statusbr.h>

#include "OfflinePacketSource.h"
#include "RendererInfoWindow.h"
#include "ScreenCapture.h"
#include "WallPictureCheck.h"

namespace {

constexpr int kTickMs = 10;
// The soak's tick leaves the toolkit just a moment for its own painting and idle work.
constexpr int kSoakTickMs = 1;
constexpr int kGap = 2;
constexpr unsigned char kOpacities[] = {255, 192, 128, 64};
constexpr PictureShapeRule kPictureShapeRules[] = {
    PictureShapeRule::Keep, PictureShapeRule::Stretch, PictureShapeRule::FourThree,
    PictureShapeRule::SixteenNine};
constexpr RenderMode kRenderModes[] = {RENDER_MODE_AUTO, RENDER_MODE_OPENGL, RENDER_MODE_SOFTWARE};

enum MenuId : int {
  kLayoutMenu = wxID_HIGHEST + 100,   // + index of the layout
  kRenderMenu = wxID_HIGHEST + 200,   // + index in kRenderModes
  kAspectMenu = wxID_HIGHEST + 300,   // + index in kPictureShapeRules
  kOpacityMenu = wxID_HIGHEST + 400,  // + index in kOpacities
  kNameMenu = wxID_HIGHEST + 450,     // + OSD position - 1
  kOverlaysMenu = wxID_HIGHEST + 500,
  kFullScreenMenu,
  kResetZoomMenu,
  kRendererInfoMenu,
};

template <typename T, size_t N>
int IndexOf(const T (&values)[N], const T& value) {
  for (size_t i = 0; i < N; ++i) {
    if (values[i] == value) return static_cast<int>(i);
  }
  return 0;
}

}  // namespace

WallFrame::WallFrame(const WallOptions& options, int* exitCode)
    : wxFrame(nullptr, wxID_ANY, "Video wall", options.geometry.GetPosition(),
              options.geometry.GetSize()),
      m_options(options),
      m_sources(options.sources,
                options.soakFrames > 0 ? SyntheticCameras::Small : SyntheticCameras::Wall),
      m_exitCode(exitCode),
      m_layout(options.layout),
      m_renderMode(options.renderMode),
      m_namePosition(options.namePosition),
      m_grid(new wxPanel(this)),
      m_screenshotPending(!options.screenshot.empty()),
      m_soak(options.soakFrames > 0 ? std::make_unique<SoakRun>(options) : nullptr) {
  const auto wait = std::chrono::seconds(15) + std::chrono::milliseconds(options.frames * 80);
  m_screenshotDeadline = std::chrono::steady_clock::now() + wait;
  m_grid->SetBackgroundColour(wxColour(30, 30, 30));
  CreateStatusBar(4);
  BuildMenus();
  CreateTiles();
  Bind(wxEVT_CLOSE_WINDOW, &WallFrame::OnClose, this);
  Bind(wxEVT_MENU, &WallFrame::OnMenu, this);
  m_frameTimer.Bind(wxEVT_TIMER, &WallFrame::OnFrameTick, this);
  m_statusTimer.Bind(wxEVT_TIMER, &WallFrame::OnStatusTick, this);
  m_captureTimer.Bind(wxEVT_TIMER, &WallFrame::OnCaptureTick, this);
  m_frameTimer.StartOnce(kTickMs);
  m_statusTimer.Start(1000);
}

WallFrame::~WallFrame() { StopAllFeeds(); }

void WallFrame::BuildMenus() {
  auto* file = new wxMenu;
  file->Append(wxID_EXIT, "&Quit\tCtrl+Q");
  auto* bar = new wxMenuBar;
  bar->Append(file, "&File");
  bar->Append(MakeViewMenu(), "&View");
  bar->Append(MakeRenderMenu(), "&Render");
  SetMenuBar(bar);
}

wxMenu* WallFrame::MakeViewMenu() {
  auto* view = new wxMenu;
  const std::vector<WallLayout>& layouts = WallLayout::All();
  for (size_t i = 0; i < layouts.size(); ++i) {
    view->AppendRadioItem(kLayoutMenu + static_cast<int>(i),
                          wxString::Format("Layout %s\tCtrl+%zu", layouts[i].Name(), i + 1));
    if (layouts[i] == m_layout) view->Check(kLayoutMenu + static_cast<int>(i), true);
  }
  view->AppendSeparator();
  auto* aspect = new wxMenu;
  const char* aspectNames[] = {"&Keep", "&Stretch", "&4:3", "&16:9"};
  for (int i = 0; i < 4; ++i) aspect->AppendRadioItem(kAspectMenu + i, aspectNames[i]);
  view->AppendSubMenu(aspect, "&Aspect ratio");
  auto* opacity = new wxMenu;
  for (int i = 0; i < 4; ++i) {
    opacity->AppendRadioItem(kOpacityMenu + i,
                             wxString::Format("%d %%", kOpacities[i] * 100 / 255));
  }
  view->AppendSubMenu(opacity, "Overlay &opacity");
  auto* name = new wxMenu;
  const char* places[] = {"Top left", "Top",         "Top right", "Left",        "Centre",
                          "Right",    "Bottom left", "Bottom",    "Bottom right"};
  for (int i = 0; i < 9; ++i) name->AppendRadioItem(kNameMenu + i, places[i]);
  name->Check(kNameMenu + m_namePosition - 1, true);
  view->AppendSubMenu(name, "Camera &name position");
  view->AppendCheckItem(kOverlaysMenu, "&Overlays\tCtrl+O")->Check(true);
  view->Append(kResetZoomMenu, "&Reset zoom of the selected tile\tCtrl+0");
  view->AppendSeparator();
  view->Append(kFullScreenMenu, "&Full screen\tF11");
  return view;
}

wxMenu* WallFrame::MakeRenderMenu() {
  auto* render = new wxMenu;
  const char* names[] = {"&Auto\tCtrl+Shift+A", "&OpenGL\tCtrl+Shift+G", "&Software\tCtrl+Shift+S"};
  for (int i = 0; i < 3; ++i) render->AppendRadioItem(kRenderMenu + i, names[i]);
  render->Check(kRenderMenu + IndexOf(kRenderModes, m_renderMode), true);
  render->AppendSeparator();
  render->Append(kRendererInfoMenu, "Renderer &information...");
  return render;
}

void WallFrame::CreateTiles() {
  for (int i = 0; i < m_layout.TileCount(); ++i) {
    auto* tile =
        new VideoTile(m_grid, wxString::Format("Camera %d", i + 1), m_renderMode, m_sources.Make(i),
                      this, m_soak ? HandOver::Lockstep : HandOver::Latest);
    ApplyPictureShapeRule(m_aspect, *tile->GetRenderer());
    tile->GetRenderer()->SetOpacity(m_opacity);
    tile->SetOverlaysShown(m_overlaysShown);
    tile->SetNamePosition(m_namePosition);
    m_tiles.push_back(tile);
  }
  ArrangeTiles();
}

void WallFrame::StopAllFeeds() {
  for (VideoTile* tile : m_tiles) tile->RequestStop();
}

void WallFrame::DestroyTiles() {
  StopAllFeeds();
  m_solo = nullptr;
  m_selected = nullptr;
  m_grid->SetSizer(nullptr);
  for (VideoTile* tile : m_tiles) {
    m_paintedByGoneTiles += tile->Painted();
    tile->Destroy();
  }
  m_tiles.clear();
}

void WallFrame::ArrangeTiles() {
  const int side = m_solo ? 1 : m_layout.Columns();
  m_grid->SetSizer(nullptr);  // detaches the tiles from the old grid
  auto* grid = new wxGridSizer(side, side, kGap, kGap);
  for (VideoTile* tile : m_tiles) {
    const bool shown = !m_solo || tile == m_solo;
    tile->Show(shown);
    if (shown) grid->Add(tile, 1, wxEXPAND);
  }
  m_grid->SetSizer(grid);
  m_grid->Layout();
}

void WallFrame::SetLayout(const WallLayout& layout) {
  DestroyTiles();
  m_layout = layout;
  CreateTiles();
  const std::vector<WallLayout>& layouts = WallLayout::All();
  const auto found = std::find(layouts.begin(), layouts.end(), layout);
  GetMenuBar()->Check(kLayoutMenu + static_cast<int>(found - layouts.begin()), true);
}

void WallFrame::SetRenderModeForAll(RenderMode mode) {
  m_renderMode = mode;
  for (VideoTile* tile : m_tiles) tile->SetRenderMode(mode);
  GetMenuBar()->Check(kRenderMenu + IndexOf(kRenderModes, mode), true);
}

void WallFrame::SetPictureShapeRule(PictureShapeRule rule) {
  m_aspect = rule;
  for (VideoTile* tile : m_tiles) tile->SetPictureShapeRule(rule);
  GetMenuBar()->Check(kAspectMenu + IndexOf(kPictureShapeRules, rule), true);
}

void WallFrame::SetOverlaysShown(bool shown) {
  m_overlaysShown = shown;
  for (VideoTile* tile : m_tiles) tile->SetOverlaysShown(shown);
  GetMenuBar()->Check(kOverlaysMenu, shown);
}

void WallFrame::SetOverlayOpacity(unsigned char opacity) {
  m_opacity = opacity;
  for (VideoTile* tile : m_tiles) {
    tile->GetRenderer()->SetOpacity(opacity);
    tile->Repaint();
  }
}

void WallFrame::SetNamePosition(int position) {
  m_namePosition = position;
  for (VideoTile* tile : m_tiles) tile->SetNamePosition(position);
}

void WallFrame::ToggleSolo(VideoTile* tile) {
  m_solo = m_solo == tile ? nullptr : tile;
  ArrangeTiles();
}

void WallFrame::SetTileShown(VideoTile* tile, bool shown) {
  tile->Show(shown);
  m_grid->Layout();
}

void WallFrame::KillSource(size_t index) {
  if (index < m_tiles.size()) {
    m_tiles[index]->ReplaceSource(std::make_unique<OfflinePacketSource>());
  }
}

void WallFrame::RestoreSource(size_t index) {
  if (index < m_tiles.size()) {
    m_tiles[index]->ReplaceSource(m_sources.Make(static_cast<int>(index)));
  }
}

void WallFrame::OnTileSelected(VideoTile* tile) {
  if (m_selected) m_selected->SetSelected(false);
  m_selected = tile;
  tile->SetSelected(true);
}

void WallFrame::OnTileDoubleClicked(VideoTile* tile) {
  CallAfter([this, tile] { ToggleSolo(tile); });
}

// Re-armed after the work rather than periodic, so that a wall too big for the machine still
// leaves the toolkit a pause for its own painting (menus, status bar) between ticks.
void WallFrame::OnFrameTick(wxTimerEvent&) {
  if (m_soak) m_soak->BeforeFrame(*this);
  for (VideoTile* tile : m_tiles) tile->ShowNewPicture();
  if (m_soak && m_soak->AfterFrame()) {
    FinishSoak();
    return;
  }
  m_frameTimer.StartOnce(m_soak ? kSoakTickMs : kTickMs);
  if (m_screenshotPending && IsReadyForScreenshot()) {
    m_screenshotPending = false;
    m_captureTimer.StartOnce(300);  // lets the last paints reach the screen
  }
}

void WallFrame::OnStatusTick(wxTimerEvent&) {
  const auto now = std::chrono::steady_clock::now();
  for (VideoTile* tile : m_tiles) {
    tile->SampleRates(now);
    if (tile->State() != FeedState::Playing && tile->IsShownOnScreen()) tile->Repaint();
  }
  m_paintedRate.Sample(PicturesPainted(), now);
  m_cpuPercent = m_cpu.Sample();
  const wxString status = StatusText();
  int field = 0;
  for (const wxString& text : wxSplit(status, '|'))
    SetStatusText(text.Strip(wxString::both), field++);
}

long long WallFrame::PicturesPainted() const {
  long long painted = m_paintedByGoneTiles;
  for (const VideoTile* tile : m_tiles) painted += tile->Painted();
  return painted;
}

wxString WallFrame::StatusText() const {
  long long dropped = 0;
  for (const VideoTile* tile : m_tiles) dropped += tile->Dropped();
  return wxString::Format("Tiles: %zu | Painted: %.0f frames/s | Dropped: %lld | CPU: %.0f %%",
                          m_tiles.size(), m_paintedRate.Rate(), dropped, m_cpuPercent);
}

void WallFrame::OnMenu(wxCommandEvent& event) {
  const int id = event.GetId();
  if (HandleChoiceMenu(id)) return;
  switch (id) {
    case wxID_EXIT: Close(); break;
    case kOverlaysMenu: SetOverlaysShown(event.IsChecked()); break;
    case kFullScreenMenu: ShowFullScreen(!IsFullScreen()); break;
    case kResetZoomMenu: ResetSelectedPtz(); break;
    case kRendererInfoMenu: ShowRendererInfo(); break;
    default: event.Skip(); break;
  }
}

// The radio groups: layout, render mode, aspect ratio, opacity, name position.
bool WallFrame::HandleChoiceMenu(int id) {
  const int layout = id - kLayoutMenu;
  if (layout >= 0 && layout < static_cast<int>(WallLayout::All().size())) {
    SetLayout(WallLayout::All()[layout]);
  } else if (id >= kRenderMenu && id < kRenderMenu + 3) {
    SetRenderModeForAll(kRenderModes[id - kRenderMenu]);
  } else if (id >= kAspectMenu && id < kAspectMenu + 4) {
    SetPictureShapeRule(kPictureShapeRules[id - kAspectMenu]);
  } else if (id >= kOpacityMenu && id < kOpacityMenu + 4) {
    SetOverlayOpacity(kOpacities[id - kOpacityMenu]);
  } else if (id >= kNameMenu && id < kNameMenu + 9) {
    SetNamePosition(id - kNameMenu + 1);
  } else {
    return false;
  }
  return true;
}

void WallFrame::ShowRendererInfo() { (new RendererInfoWindow(this))->Show(); }

void WallFrame::ResetSelectedPtz() {
  if (m_selected) m_selected->ResetPtz();
}

void WallFrame::OnClose(wxCloseEvent&) {
  m_frameTimer.Stop();
  m_statusTimer.Stop();
  m_captureTimer.Stop();
  StopAllFeeds();
  Destroy();
}

bool WallFrame::IsReadyForScreenshot() const {
  if (std::chrono::steady_clock::now() > m_screenshotDeadline) return true;
  for (const VideoTile* tile : m_tiles) {
    if (tile->IsShown() && tile->Painted() < m_options.frames) return false;
  }
  return true;
}

void WallFrame::FinishSoak() {
  wxString report;
  const bool shown = CheckPictures(CaptureWall(), report);
  m_soak->SetPicturesChecked(shown, report);
  const bool passed = m_soak->Passed();
  std::printf("%s\n", m_soak->Summary(PicturesPainted()).utf8_str().data());
  std::fflush(stdout);
  if (m_exitCode) *m_exitCode = passed ? 0 : 1;
  Close();
}

void WallFrame::OnCaptureTick(wxTimerEvent&) {
  TakeScreenshot();
  Close();
}

void WallFrame::TakeScreenshot() {
  const wxImage wall = CaptureWall();
  const std::string path = m_options.screenshot.ToStdString();
  bool ok = wall.IsOk() && wall.SaveFile(m_options.screenshot, wxBITMAP_TYPE_PNG);
  if (ok) {
    std::printf("videowall: screenshot written to %s\n", path.c_str());
  } else {
    std::fprintf(stderr, "videowall: cannot capture or write %s\n", path.c_str());
  }
  if (ok && m_options.selfCheck) {
    wxString report;
    ok = CheckPictures(wall, report);
    std::printf("videowall: self-check %s\n%s", ok ? "passed" : "failed", report.utf8_str().data());
  }
  std::fflush(stdout);
  if (m_exitCode) *m_exitCode = ok ? 0 : 1;
}

wxImage WallFrame::CaptureWall() { return ScreenCapture::GrabScreen(GetScreenRect()); }

bool WallFrame::CheckPictures(const wxImage& wall, wxString& report) const {
  const wxPoint origin = GetScreenPosition();
  bool ok = true;
  for (const VideoTile* tile : m_tiles) {
    if (!tile->IsShown()) continue;
    wxRect picture = tile->PictureRect();
    picture.Offset(tile->GetScreenPosition() - origin);
    wxString why;
    const bool shows = WallPictureCheck::CheckTile(wall, picture, tile->VideoSize(), why);
    if (!shows) report << tile->GetName() << ": " << why << "\n";
    ok = ok && shows;
  }
  return ok;
}
