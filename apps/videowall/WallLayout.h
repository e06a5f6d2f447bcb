// WallLayout: the grid of a video wall, one of the layouts an operator can pick: 1, 2x2, 3x3,
// 4x4, 6x6 or 8x8 tiles.
//
// It only names and measures grids; it creates no windows and knows nothing of sources.
#pragma once

#include <vector>

#include <wx/string.h>

class WallLayout {
 public:
  // 3x3, the default wall.
  WallLayout();

  // Every layout offered, smallest first.
  static const std::vector<WallLayout>& All();
  // The layout called `name` ("1", "2x2", ... "8x8"); false for any other name.
  static bool FromName(const wxString& name, WallLayout& layout);

  int Columns() const { return m_side; }
  int Rows() const { return m_side; }
  int TileCount() const { return m_side * m_side; }
  wxString Name() const;

  bool operator==(const WallLayout& other) const { return m_side == other.m_side; }

 private:
  explicit WallLayout(int side) : m_side(side) {}

  int m_side;
};
