// The toolkit-specific step a GL canvas needs before a context can be made current on it.
//
// On GTK a window gets its native (X) window only when it is realised, which normally happens
// when its top-level window is first shown; hosts build their tiles before that. Realising the
// canvas at once gives it its X window (unmapped until shown), so the first renderer can probe
// the driver and every renderer can make its context current from the start. Elsewhere native
// windows exist from creation and this does nothing.
#pragma once

class wxWindow;

void RealizeNativeWindow(wxWindow* window);
