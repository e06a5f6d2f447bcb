// AspectRule: one renderer setting per menu choice.
#include "AspectRule.h"

#include <renderer/IRenderer.h>

void ApplyAspectRule(AspectRule rule, IRenderer& renderer) {
  renderer.SetIgnoreAspectRatio(rule == AspectRule::Stretch);
  switch (rule) {
    case AspectRule::FourThree: renderer.SetAspectRatio(4.0f / 3.0f); break;
    case AspectRule::SixteenNine: renderer.SetAspectRatio(16.0f / 9.0f); break;
    default: renderer.ResetAspectRatio(); break;
  }
}
