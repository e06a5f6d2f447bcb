// PictureShapeRule: the aspect-ratio choices of the wall's View menu (keep the video's own, stretch
// to the tile, force 4:3 or 16:9) and how each is set on a renderer.
//
// It only sets the renderer's aspect settings; it does not lay out tiles or crop.
#pragma once

class IRenderer;

enum class PictureShapeRule { Keep, Stretch, FourThree, SixteenNine };

// Sets `rule` on `renderer` (aspect ratio and the ignore-aspect flag).
void ApplyPictureShapeRule(PictureShapeRule rule, IRenderer& renderer);
