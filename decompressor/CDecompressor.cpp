// CDecompressor: the process-wide video-output factory.
#include "CDecompressor.h"

#include "IVideoOutput.h"

namespace {

CDecompressor::VideoOutputFactory& Factory() {
  static CDecompressor::VideoOutputFactory factory;
  return factory;
}

}  // namespace

void CDecompressor::SetVideoOutputFactory(VideoOutputFactory factory) {
  Factory() = std::move(factory);
}

bool CDecompressor::HasVideoOutput() { return static_cast<bool>(Factory()); }

IVideoOutput* CDecompressor::CreateVideoOutput() {
  return HasVideoOutput() ? Factory()() : nullptr;
}

void CDecompressor::DeleteVideoOutput(IVideoOutput*& output) {
  delete output;
  output = nullptr;
}
