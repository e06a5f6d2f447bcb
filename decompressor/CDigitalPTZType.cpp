// CDigitalPTZType: which PTZ is in effect for a view, owning only the view's default.
#include "CDigitalPTZType.h"

#include "CDigitalPTZ.h"

CDigitalPTZType::CDigitalPTZType() : m_ptz(nullptr) {}

CDigitalPTZType::~CDigitalPTZType() = default;

CDigitalPTZ* CDigitalPTZType::Get() const { return m_ptz; }

void CDigitalPTZType::Set(CDigitalPTZ* ptz) { m_ptz = ptz ? ptz : m_default.get(); }

void CDigitalPTZType::Set(const CDigitalPTZType& other) {
  const bool otherUsesItsDefault = other.m_ptz == other.m_default.get();
  Set(otherUsesItsDefault ? nullptr : other.m_ptz);
}

void CDigitalPTZType::Reset(std::unique_ptr<CDigitalPTZ> ownDefault) {
  m_default = std::move(ownDefault);
  m_ptz = m_default.get();
}
