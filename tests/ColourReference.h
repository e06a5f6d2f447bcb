// The reference colour conversion the decoder tests check against: BT.601 limited range with
// the constants of the renderer's YUV fragment programs. Written out independently of the
// decoder, which converts through libswscale. Plain arithmetic; no pixel layouts here.
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
