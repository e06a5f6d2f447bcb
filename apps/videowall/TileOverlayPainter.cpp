// TileOverlayPainter: labels, logo, greying and outline through the facade.
#include "TileOverlayPainter.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <renderer/RendererBase.h>
#include <wx/dcmemory.h>

namespace {

constexpr int kMargin = 4;
const wxColour kLabelBackground(0, 0, 0, 150);

wxFont LabelFont(bool bold) {
  wxFontInfo info(8);
  info.Family(wxFONTFAMILY_SWISS);
  if (bold) info.Bold();
  return wxFont(info);
}

wxString ClockText(double seconds) {
  const long long millis = std::llround(std::max(seconds, 0.0) * 1000.0);
  return wxString::Format("%02lld:%02lld:%02lld.%03lld", millis / 3600000, millis / 60000 % 60,
                          millis / 1000 % 60, millis % 1000);
}

}  // namespace

TileOverlayPainter::TileOverlayPainter(Renderer& renderer, wxDC* dc, const wxRect& tile,
                                       const wxRect& picture)
    : m_renderer(renderer), m_dc(dc), m_tile(tile), m_picture(picture) {}

wxImage TileOverlayPainter::MakeLogo() {
  wxBitmap bitmap(28, 18, 24);
  {
    wxMemoryDC dc(bitmap);
    dc.SetBackground(wxBrush(wxColour(20, 60, 140)));
    dc.Clear();
    dc.SetPen(*wxWHITE_PEN);
    dc.SetBrush(*wxWHITE_BRUSH);
    dc.DrawRectangle(4, 5, 13, 9);
    dc.DrawPolygon(3,
                   std::array<wxPoint, 3>{wxPoint(17, 9), wxPoint(24, 4), wxPoint(24, 14)}.data());
    dc.SetBrush(wxBrush(wxColour(220, 40, 40)));
    dc.DrawCircle(10, 9, 2);
  }
  return bitmap.ConvertToImage();
}

wxRect TileOverlayPainter::Inner() const { return wxRect(m_picture).Deflate(kMargin); }

void TileOverlayPainter::Name(const wxString& name, int osdPosition) {
  m_renderer.DrawLabel(m_dc, name, LabelFont(true), *wxWHITE, Inner(),
                       RendererBase::OsdPosToAlignment(osdPosition), false, kLabelBackground);
}

// Left out where it would crowd the name (small tiles of big walls).
void TileOverlayPainter::Timestamp(double seconds) {
  const wxString text = ClockText(seconds);
  if (m_renderer.MeasureText(text, LabelFont(false)).x * 2 > Inner().width) return;
  m_renderer.DrawLabel(m_dc, text, LabelFont(false), wxColour(255, 255, 160), Inner(),
                       RendererBase::OsdPosToAlignment(3), false, kLabelBackground);
}

// Left out where it would not fit beside the logo.
void TileOverlayPainter::Statistics(const wxString& line) {
  const int logoRoom = 40;
  if (m_renderer.MeasureText(line, LabelFont(false)).x + logoRoom > Inner().width) return;
  m_renderer.DrawLabel(m_dc, line, LabelFont(false), wxColour(200, 255, 200), Inner(),
                       RendererBase::OsdPosToAlignment(7), false, kLabelBackground);
}

void TileOverlayPainter::Logo(IRendererImage* logo) {
  const wxSize size = logo->GetSize();
  const wxRect inner = Inner();
  if (inner.width < size.x * 3 || inner.height < size.y * 3) return;
  m_renderer.DrawImage(m_dc, logo, inner.GetRight() - size.x, inner.GetBottom() - size.y);
}

// Two labels rather than one of two lines: the lines have fonts of their own.
void TileOverlayPainter::NoSignal(const wxString& location) {
  m_renderer.DrawRect(m_dc, m_picture, wxColour(110, 110, 110, 190));
  wxFontInfo info(14);
  const wxFont font(info.Family(wxFONTFAMILY_SWISS).Bold());
  const int half = m_renderer.GetLineHeight(font) / 2;
  const int centre = RendererBase::OsdPosToAlignment(5);
  const wxColour red(255, 90, 90);
  const wxRect inner = Inner();
  m_renderer.DrawLabel(m_dc, "No signal", font, red,
                       wxRect(inner.x, inner.y - half, inner.width, inner.height), centre, false,
                       kLabelBackground);
  m_renderer.DrawLabel(m_dc, location, LabelFont(true), red,
                       wxRect(inner.x, inner.y + half + 2, inner.width, inner.height), centre,
                       false, kLabelBackground);
}

void TileOverlayPainter::SelectionOutline() {
  m_renderer.DrawRectOutline(m_dc, m_tile, wxColour(255, 200, 0), 3);
}
