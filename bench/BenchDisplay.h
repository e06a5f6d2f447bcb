// The toolkit side of the benchmarks that draw: a started toolkit with an active event loop,
// one shown frame holding one tile, event pumping, and waiting until drawing is really done.
// It measures nothing itself.
#pragma once

#include <functional>

#include <wx/gdicmn.h>

class wxWindow;

// Starts the toolkit, shows a frame at the top left of the screen with one tile of `tileSize`
// at its top left, runs `body`
// with the tile and tears everything down. Returns `body`'s result, or 2 when the toolkit
// cannot start (no display).
int RunWithTile(int argc, char** argv, const wxSize& tileSize,
                const std::function<int(wxWindow* tile)>& body);

// Runs pending events and idle handlers for `milliseconds`.
void PumpFor(int milliseconds);
// Runs the events and idle handlers pending now, without waiting for more.
void PumpPending();

// Returns once everything drawn so far is done: the GL commands of the current context (if
// any) executed and every request to the X server handled.
void FinishDrawing();
