// The reference colour conversions the decoder tests check against: BT.601 limited range with
// the constants of the renderer's YUV fragment programs, and any matrix and range from the
// luma weights of its standard. Written out independently of the decoder, which converts
// through libswscale. Plain arithmetic; no pixel layouts here.
#pragma once

struct Rgb {
  int r;
  int g;
  int b;
};

struct Yuv {
  int y;
  int u;
  int v;
};

// R = 1.1643 (Y - 16) + 1.5958 (V - 128), G = ... - 0.39173 (U - 128) - 0.8129 (V - 128),
// B = ... + 2.017 (U - 128), rounded and clamped to 0..255.
Rgb ReferenceYuvToRgb(const Yuv& yuv);

// The inverse: Y = 16 + (65.481 R + 128.553 G + 24.966 B) / 255, and so on, rounded.
Yuv ReferenceRgbToYuv(const Rgb& rgb);

// The same samples before rounding.
struct ExactYuv {
  double y;
  double u;
  double v;
};
ExactYuv ReferenceRgbToExactYuv(const Rgb& rgb);

// A YUV matrix by the luma weights of red and blue of its standard (green's is the rest).
struct LumaWeights {
  double kr;
  double kb;
};
constexpr LumaWeights kBt601Weights{0.299, 0.114};
constexpr LumaWeights kBt709Weights{0.2126, 0.0722};
constexpr LumaWeights kBt2020Weights{0.2627, 0.0593};

// Y = kr R + kg G + kb B, U = (B - Y) / (2 (1 - kb)), V = (R - Y) / (2 (1 - kr)) on 0..1,
// then quantised: limited range 16 + 219 Y and 128 + 224 U (V), full range 255 Y and
// 128 + 255 U (V); rounded and clamped.
Yuv ReferenceRgbToYuv(const Rgb& rgb, const LumaWeights& weights, bool fullRange);

// The exact inverse, rounded and clamped to 0..255.
Rgb ReferenceYuvToRgb(const Yuv& yuv, const LumaWeights& weights, bool fullRange);
