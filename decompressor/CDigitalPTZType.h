// CDigitalPTZType: the slot that names the PTZ in effect for one view.
//
// A view owns a default PTZ of its own and may be lent one by the host. The slot points at
// one of them. It owns only the default; a lent PTZ stays the host's, and must outlive the
// views it is set on (or be replaced first).
#pragma once

#include <memory>

class CDigitalPTZ;

class CDigitalPTZType {
 public:
  CDigitalPTZType();
  ~CDigitalPTZType();
  CDigitalPTZType(const CDigitalPTZType&) = delete;
  CDigitalPTZType& operator=(const CDigitalPTZType&) = delete;

  // The PTZ the slot points at (null only after Reset(nullptr)).
  CDigitalPTZ* Get() const;

  // Points the slot at a PTZ lent by the host; null points it back at the default.
  void Set(CDigitalPTZ* ptz);

  // Takes over another view's choice: a lent PTZ is shared, while the other view's own
  // default means this view's own default, so no view ever points at another's default.
  void Set(const CDigitalPTZType& other);

  // Replaces the owned default (deleting the old one) and points the slot at the new one.
  void Reset(std::unique_ptr<CDigitalPTZ> ownDefault);

 private:
  CDigitalPTZ* m_ptz;
  std::unique_ptr<CDigitalPTZ> m_default;
};
