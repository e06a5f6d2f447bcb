// VideoTile: hand-over from the feed, one paint per picture, overlays and PTZ gestures.
#include "VideoTile.h"

#include <decompressor/CDigitalPTZType.h>
#include <wx/dcclient.h>

#include "TileOverlayPainter.h"

namespace {

constexpr float kMaxZoom = 8.0f;
constexpr float kWheelStep = 1.25f;

}  // namespace

VideoTile::VideoTile(wxWindow* parent, const wxString& name, RenderMode mode,
                     std::unique_ptr<IPacketSource> source, ITileListener* listener,
                     HandOver handOver)
    : RendererPanel(name, parent, mode),
      m_name(name),
      m_listener(listener),
      m_logo(GetRenderer()->CreateImage(TileOverlayPainter::MakeLogo())),
      m_ptz(kMaxZoom),
      m_handOver(handOver),
      m_feed(std::make_unique<TileFeed>(std::move(source), handOver)) {
  SetBackgroundColour(*wxBLACK);
  SetMinSize(wxSize(64, 36));
  GetRenderer()->SetDrawOverlaysHandler(this);
  m_ptzSetting.enabled = true;
  m_ptzSetting.SetMaxZoom(kMaxZoom);
  GetRenderer()->GetPtzType().Set(&m_ptzSetting);
  Bind(wxEVT_MOUSEWHEEL, &VideoTile::OnWheel, this);
  Bind(wxEVT_LEFT_DOWN, &VideoTile::OnLeftDown, this);
  Bind(wxEVT_MOTION, &VideoTile::OnMotion, this);
  Bind(wxEVT_RIGHT_DOWN, &VideoTile::OnRightDown, this);
  Bind(wxEVT_LEFT_DCLICK, &VideoTile::OnDoubleClick, this);
}

// The worker goes before the renderer and its window, and the renderer gives the PTZ back.
VideoTile::~VideoTile() {
  m_feed.reset();
  GetRenderer()->GetPtzType().Set(nullptr);
}

// The old worker is joined before the new one starts, so the two never share the tile.
void VideoTile::ReplaceSource(std::unique_ptr<IPacketSource> source) {
  m_feed.reset();
  m_feed = std::make_unique<TileFeed>(std::move(source), m_handOver);
  Repaint();
}

bool VideoTile::ShowNewPicture() {
  if (!IsShownOnScreen()) return false;
  const bool taken = m_feed->TakePicture(
      [this](CDecompressor& decoder, double seconds) { CopyPicture(decoder, seconds); });
  if (taken && m_unpainted) Repaint();
  return taken;
}

void VideoTile::CopyPicture(CDecompressor& decoder, double pictureSeconds) {
  Renderer* renderer = GetRenderer();
  int width = decoder.GetWidth();
  int height = decoder.GetHeight();
  int format = PIXEL_FORMAT_I420;
  wxRect source(0, 0, width, height);
  CDigitalPTZ* ptz = &m_ptzSetting;
  m_videoSize = wxSize(width, height);
  renderer->NegotiateFormat(width, height, format, source, &decoder, ptz);
  if (!renderer->CopyFrame(decoder, width, height, format, source, ptz)) return;
  m_pictureSeconds = pictureSeconds;
  m_unpainted = true;
}

void VideoTile::Repaint() {
  if (!IsShownOnScreen()) return;
  if (GetRenderer()->RequiresDC()) {
    Refresh(false);
    return;
  }
  wxClientDC dc(this);
  GetRenderer()->Render(&dc);
}

void VideoTile::SampleRates(RateMeter::Clock::time_point now) {
  m_receivedRate.Sample(m_feed->Received(), now);
  m_paintedRate.Sample(m_painted, now);
}

void VideoTile::SetRenderMode(RenderMode mode) {
  GetRenderer()->SetRenderMode(mode);
  Refresh(true);
}

void VideoTile::SetPictureShapeRule(PictureShapeRule rule) {
  ApplyPictureShapeRule(rule, *GetRenderer());
  Refresh(true);
}

void VideoTile::SetOverlaysShown(bool shown) {
  m_overlaysShown = shown;
  Repaint();
}

void VideoTile::SetNamePosition(int position) {
  m_namePosition = position;
  Repaint();
}

void VideoTile::SetSelected(bool selected) {
  if (m_selected == selected) return;
  m_selected = selected;
  Repaint();
}

void VideoTile::ZoomAt(float u, float v, float factor) {
  m_ptz.ZoomAt(u, v, factor);
  ApplyPtz();
}

void VideoTile::PanBy(float du, float dv) {
  m_ptz.PanBy(du, dv);
  ApplyPtz();
}

void VideoTile::ResetPtz() {
  m_ptz.Reset();
  ApplyPtz();
}

wxRect VideoTile::PictureRect() const {
  if (m_videoSize.x <= 0 || m_videoSize.y <= 0) return wxRect(GetClientSize());
  wxRect destination;
  wxRect source(0, 0, m_videoSize.x, m_videoSize.y);
  GetRenderer()->GetSubImageRect(m_videoSize.x, m_videoSize.y, destination, source, false);
  return destination.IsEmpty() ? wxRect(GetClientSize()) : destination;
}

wxString VideoTile::BackendName() const {
  Renderer* renderer = GetRenderer();
  if (renderer->IsInSoftwareFallback()) return "Software (fallback)";
  return renderer->RequiresDC() ? "Software" : "OpenGL";
}

wxString VideoTile::StatisticsLine() const {
  if (m_videoSize.x <= 0) return "no picture yet  " + BackendName();
  return wxString::Format("%dx%d  %.0f/%.0f fps  %s", m_videoSize.x, m_videoSize.y,
                          m_receivedRate.Rate(), m_paintedRate.Rate(), BackendName());
}

void VideoTile::RendererDrawOverlays(IRenderer*, wxDC* dc) {
  if (m_unpainted) ++m_painted;
  m_unpainted = false;
  TileOverlayPainter painter(*GetRenderer(), dc, wxRect(GetClientSize()), PictureRect());
  if (State() != FeedState::Playing) painter.NoSignal(m_feed->Location());
  if (m_overlaysShown) {
    painter.Name(m_name, m_namePosition);
    painter.Timestamp(m_pictureSeconds);
    painter.Statistics(StatisticsLine());
    painter.Logo(m_logo);
  }
  if (m_selected) painter.SelectionOutline();
}

void VideoTile::ApplyPtz() { m_ptzSetting.SetPanTiltZoom(m_ptz.Pan(), m_ptz.Tilt(), m_ptz.Zoom()); }

wxRealPoint VideoTile::PicturePoint(const wxPoint& position) const {
  const wxRect picture = PictureRect();
  return wxRealPoint(static_cast<double>(position.x - picture.x) / picture.width,
                     static_cast<double>(position.y - picture.y) / picture.height);
}

void VideoTile::OnWheel(wxMouseEvent& event) {
  const wxRealPoint at = PicturePoint(event.GetPosition());
  const float step = event.GetWheelRotation() > 0 ? kWheelStep : 1.0f / kWheelStep;
  ZoomAt(static_cast<float>(at.x), static_cast<float>(at.y), step);
}

void VideoTile::OnLeftDown(wxMouseEvent& event) {
  m_dragFrom = event.GetPosition();
  if (m_listener) m_listener->OnTileSelected(this);
}

void VideoTile::OnMotion(wxMouseEvent& event) {
  if (!event.LeftIsDown() || !m_ptz.IsZoomed()) return;
  const wxRect picture = PictureRect();
  const wxPoint moved = event.GetPosition() - m_dragFrom;
  m_dragFrom = event.GetPosition();
  PanBy(static_cast<float>(moved.x) / picture.width, static_cast<float>(moved.y) / picture.height);
}

void VideoTile::OnRightDown(wxMouseEvent&) { ResetPtz(); }

void VideoTile::OnDoubleClick(wxMouseEvent&) {
  if (m_listener) m_listener->OnTileDoubleClicked(this);
}
