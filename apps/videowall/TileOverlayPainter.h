// TileOverlayPainter: the overlays of one tile for one paint, drawn through the tile's
// Renderer facade (so they follow its opacity and whichever back-end is active): camera name,
// picture time, statistics line, logo, "No signal" over a greyed picture, and the outline of
// the selected tile.
//
// Labels sit on the top and bottom edges of the picture, leaving its middle (where the
// screenshot check samples) free; the time and statistics are left out of pictures too small
// for them. It holds no state between paints and decides nothing about
// what to show: the tile does.
#pragma once

#include <renderer/Renderer.h>

class wxDC;

class TileOverlayPainter {
 public:
  // `tile` is the whole tile, `picture` where the video lies in it.
  TileOverlayPainter(Renderer& renderer, wxDC* dc, const wxRect& tile, const wxRect& picture);

  // The small logo drawn in the picture's bottom right corner.
  static wxImage MakeLogo();

  // The camera name at OSD position `osdPosition` (1 to 9, top left to bottom right).
  void Name(const wxString& name, int osdPosition);
  void Timestamp(double seconds);
  void Statistics(const wxString& line);
  void Logo(IRendererImage* logo);
  // Greys the picture and writes "No signal" across it, with the source's location below.
  void NoSignal(const wxString& location);
  void SelectionOutline();

 private:
  wxRect Inner() const;

  Renderer& m_renderer;
  wxDC* m_dc;
  wxRect m_tile;
  wxRect m_picture;
};
