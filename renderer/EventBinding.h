// EventBinding: one dynamic event binding (an event of a source window sent to a member
// function of a handler) that is undone when the object goes or when Unbind is called.
//
// It binds exactly once, at construction, and it does not outlive the source: the owner must
// undo it (destroy it or call Unbind) while the source window still exists.
#pragma once

#include <wx/event.h>

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

  // Undoes the binding now; later calls do nothing.
  void Unbind() {
    if (!m_source) return;
    m_source->Unbind(m_type, m_method, m_handler);
    m_source = nullptr;
  }

 private:
  wxEvtHandler* m_source;
  wxEventTypeTag<Event> m_type;
  Method m_method;
  Handler* m_handler;
};
