// GLFaults: one bit per switch.
#include "GLFaults.h"

namespace {

// A value outside the enumeration has no switch: it is never set.
unsigned Bit(GLFault fault) {
  const auto index = static_cast<unsigned>(fault);
  return index < 32 ? 1u << index : 0u;
}

}  // namespace

std::atomic<unsigned> GLFaults::s_switches{0};

void GLFaults::Set(GLFault fault, bool on) {
  if (on) {
    s_switches.fetch_or(Bit(fault));
  } else {
    s_switches.fetch_and(~Bit(fault));
  }
}

bool GLFaults::IsSet(GLFault fault) {
  return (s_switches.load(std::memory_order_relaxed) & Bit(fault)) != 0;
}

void GLFaults::Clear() { s_switches = 0; }
