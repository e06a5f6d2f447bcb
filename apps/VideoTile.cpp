// VideoTile: synthetic camera -> decoder -> software renderer, with overlays.
#include "VideoTile.h"

#include <wx/dcclient.h>

VideoTile::VideoTile(wxWindow* parent, const wxString& name, const wxSize& cameraSize, int rate)
    : wxWindow(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxFULL_REPAINT_ON_RESIZE),
      m_name(name),
      m_camera(cameraSize.x, cameraSize.y, rate),
      m_renderer(this) {
  SetBackgroundColour(wxColour(24, 24, 24));
  SetBackgroundStyle(wxBG_STYLE_PAINT);  // the renderer paints every pixel
  SetMinSize(wxSize(160, 90));
  m_renderer.SetDrawOverlaysHandler(this);
  m_renderer.SetVideoSize(wxSize(m_camera.GetWidth(), m_camera.GetHeight()));
  Bind(wxEVT_PAINT, &VideoTile::OnPaint, this);
}

wxRect VideoTile::PictureRect() {
  wxRect destination;
  wxRect source;
  m_renderer.GetSubImageRect(m_camera.GetWidth(), m_camera.GetHeight(), destination, source, false);
  return destination;
}

void VideoTile::NextFrame() {
  m_camera.NextFrame();
  const long long pts = m_camera.GetFrameIndex();
  if (m_decoder.PutFrame(m_camera.GetPlanes(), m_camera.GetPitches(), m_camera.GetFormat(),
                         m_camera.GetWidth(), m_camera.GetHeight(), pts) != DECOMP_OK) {
    return;
  }
  const wxRect target = PictureRect();
  unsigned char* planes[3] = {};
  int pitches[3] = {};
  if (!m_renderer.GetFrameBuffer(target.width, target.height, PIXEL_FORMAT_RGB24, planes,
                                 pitches)) {
    return;
  }
  m_decoder.GetImage(planes, pitches, PIXEL_FORMAT_RGB24, target.width, target.height, 0, 0,
                     m_camera.GetWidth(), m_camera.GetHeight(), nullptr);
  m_renderer.FlushFrameBuffer(planes, pitches);
  Refresh(false);
}

void VideoTile::RenderTo(wxDC& dc) { m_renderer.Render(&dc); }

void VideoTile::OnPaint(wxPaintEvent&) {
  wxPaintDC dc(this);
  RenderTo(dc);
}

void VideoTile::RendererDrawOverlays(IRenderer* renderer, wxDC* dc) {
  const wxRect picture = PictureRect();
  const wxFont font(wxFontInfo(11).Family(wxFONTFAMILY_SWISS).Bold());
  const wxRect inner = wxRect(picture).Deflate(6);
  renderer->DrawLabel(dc, m_name, font, *wxWHITE, inner, RendererBase::OsdPosToAlignment(1), false,
                      wxColour(0, 0, 0, 160));
  const wxString stream = wxString::Format("synthetic %dx%d @ %d fps", m_camera.GetWidth(),
                                           m_camera.GetHeight(), m_camera.GetFrameRate());
  renderer->DrawLabel(dc, stream, wxFont(wxFontInfo(9).Family(wxFONTFAMILY_SWISS)),
                      wxColour(255, 255, 160), inner, RendererBase::OsdPosToAlignment(3), true,
                      wxNullColour);
  // Follow the moving box: camera pixels scaled into the picture rectangle.
  const PtzRect box = m_camera.GetBoxRect(m_camera.GetFrameIndex());
  const double sx = static_cast<double>(picture.width) / m_camera.GetWidth();
  const double sy = static_cast<double>(picture.height) / m_camera.GetHeight();
  const wxRect marker(picture.x + static_cast<int>(box.x * sx) - 4,
                      picture.y + static_cast<int>(box.y * sy) - 4,
                      static_cast<int>(box.width * sx) + 8, static_cast<int>(box.height * sy) + 8);
  renderer->DrawRectOutline(dc, marker, wxColour(255, 64, 64), 2);
}
