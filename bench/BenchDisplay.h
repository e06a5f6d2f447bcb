// The toolkit side of the GL and facade benchmarks: a started toolkit with an active event
// loop, one shown frame holding one tile, and event pumping. It measures nothing itself.
#pragma once

#include <functional>

#include <wx/gdicmn.h>

class wxWindow;

// Starts the toolkit, shows a frame with one tile of `tileSize` at its top left, runs `body`
// with the tile and tears everything down. Returns `body`'s result, or 2 when the toolkit
// cannot start (no display).
int RunWithTile(int argc, char** argv, const wxSize& tileSize,
                const std::function<int(wxWindow* tile)>& body);

// Runs pending events and idle handlers for `milliseconds`.
void PumpFor(int milliseconds);
