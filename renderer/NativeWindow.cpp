// Realising a window's native window ahead of its first showing (GTK only).
#include "NativeWindow.h"

#include <wx/window.h>

#ifdef __WXGTK__
#include <gtk/gtk.h>

void RealizeNativeWindow(wxWindow* window) {
  // The drawing area is the widget a GL context is made current on; realising it realises
  // its ancestors too, the top-level window included, without mapping any of them.
  if (window && window->m_wxwindow) gtk_widget_realize(window->m_wxwindow);
}

#else

void RealizeNativeWindow(wxWindow*) {}

#endif
