// WallLayout: the offered grids and their names.
#include "WallLayout.h"

WallLayout::WallLayout() : m_side(3) {}

const std::vector<WallLayout>& WallLayout::All() {
  static const std::vector<WallLayout> layouts = {WallLayout(1), WallLayout(2), WallLayout(3),
                                                  WallLayout(4), WallLayout(6), WallLayout(8)};
  return layouts;
}

bool WallLayout::FromName(const wxString& name, WallLayout& layout) {
  for (const WallLayout& candidate : All()) {
    if (candidate.Name() == name.Lower()) {
      layout = candidate;
      return true;
    }
  }
  return false;
}

wxString WallLayout::Name() const {
  return m_side == 1 ? wxString("1") : wxString::Format("%dx%d", m_side, m_side);
}
