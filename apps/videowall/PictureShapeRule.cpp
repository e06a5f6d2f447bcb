// PictureShapeRule: one renderer setting per menu choice.
#include "PictureShapeRule.h"

#include <renderer/IRenderer.h>

void ApplyPictureShapeRule(PictureShapeRule rule, IRenderer& renderer) {
  renderer.SetIgnoreAspectRatio(rule == PictureShapeRule::Stretch);
  switch (rule) {
    case PictureShapeRule::FourThree: renderer.SetAspectRatio(4.0f / 3.0f); break;
    case PictureShapeRule::SixteenNine: renderer.SetAspectRatio(16.0f / 9.0f); break;
    default: renderer.ResetAspectRatio(); break;
  }
}
