// FuzzValues: the argument values the harnesses hand to public operations, drawn from the
// fuzz input.
//
// Mostly the values a host plausibly passes (small sizes, the known pixel formats, pitches
// of a row plus padding, sane PTZ numbers), and, often enough to matter, the hostile ones:
// zero, negative and huge sizes, sizes at and past the library's limit, unused and
// out-of-range format codes, pitches shorter than a row, and floats that are NaN, infinite,
// denormal or raw bit patterns. It owns no state besides the provider it reads from.
#pragma once

#include <cstdint>
#include <string>

#include <fuzzer/FuzzedDataProvider.h>

class FuzzValues {
 public:
  explicit FuzzValues(FuzzedDataProvider& provider) : m_provider(provider) {}

  FuzzedDataProvider& Provider() { return m_provider; }
  bool Empty() const { return m_provider.remaining_bytes() == 0; }

  bool Bool() { return m_provider.ConsumeBool(); }
  // 0 .. count - 1.
  int Choice(int count) { return m_provider.ConsumeIntegralInRange(0, count - 1); }
  // Mostly 1 .. `usual`; else 0, negative, at and past the limits, or any int.
  int Dimension(int usual);
  // Mostly 0 .. `usual`; else negative, huge or any int.
  int Coordinate(int usual);
  // Mostly a known pixel-format code; else an unused or out-of-range one.
  int Format();
  // Mostly `rowBytes` plus a little padding; else shorter, zero, negative or any int.
  int Pitch(int rowBytes);
  // Mostly in [low, high]; else NaN, an infinity, zero, a denormal, huge or raw bits.
  float Float(float low, float high);
  // Any bytes as text (UTF-8 read leniently), up to `maxLength` bytes.
  std::string Text(size_t maxLength);

 private:
  FuzzedDataProvider& m_provider;
};
