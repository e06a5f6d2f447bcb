// The video wall program's entry point: a wall of live camera tiles on the renderer library.
//
//   videowall [--layout 1|2x2|3x3|4x4|6x6|8x8] [--source URL]... [--sources FILE]
//             [--render-mode auto|opengl|software] [--geometry WxH[+X+Y]]
//             [--screenshot FILE [--frames N] [--self-check]]
//
// Everything else lives in the classes of this directory; this file only names the app.
#include "VideoWallApp.h"

wxIMPLEMENT_APP(VideoWallApp);
