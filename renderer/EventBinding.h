// EventBinding: one dynamic event binding (an event of a source window sent to a member
// function of a handler) that is undone when the object goes or when Unbind is called.
//
// It binds exactly once, at construction. The source may go first: a back-end whose deletion
// is deferred can outlive its parent window. The window takes its bindings with it, and the
// weak reference tells the binding so, so that nothing is unbound from freed memory. The
// handler is the binding's owner and outlives it.
#pragma once

#include <wx/event.h>
#include <wx/weakref.h>

template <typename Event, typename Handler>
class EventBinding {
 public:
  using Method = void (Handler::*)(Event&);

  EventBinding(wxEvtHandler* source, const wxEventTypeTag<Event>& type, Method method,
               Handler* handler)
      : m_source(source), m_type(type), m_method(method), m_handler(handler) {
    m_source->Bind(m_type, m_method, m_handler);
  }
  ~EventBinding() { Unbind(); }
  EventBinding(const EventBinding&) = delete;
  EventBinding& operator=(const EventBinding&) = delete;

  // Undoes the binding now; later calls, and calls after the source has gone, do nothing.
  void Unbind() {
    if (!m_source) return;
    m_source->Unbind(m_type, m_method, m_handler);
    m_source = nullptr;
  }

 private:
  wxWeakRef<wxEvtHandler> m_source;
  wxEventTypeTag<Event> m_type;
  Method m_method;
  Handler* m_handler;
};
