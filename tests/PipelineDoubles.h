// Doubles for the facade's frame path: a decoder that can claim hardware decoding and records
// what the facade asks of it, and a back-end that can take hardware images, refuse frames and
// hold a video output, recording every frame-path call.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include <decompressor/CDecompressor.h>

#include "TestBackend.h"

class RecordingDecoder : public CDecompressor {
 public:
  struct ImageCall {
    int format;
    int width;
    int height;
    wxRect source;
    CDigitalPTZ* ptz;
  };

  // Choices a test makes.
  bool hardware = false;
  int hardwareFormat = PIXEL_FORMAT_NONE;
  bool requiresSoftware = false;
  int copyResult = 0;
  int imageResult = DECOMP_ERROR_NO_FRAME;
  std::function<void()> duringGetImage;  // runs inside GetImage (re-entry probes)

  // What happened.
  std::vector<std::string> calls;
  std::vector<ImageCall> images;
  std::vector<HardwareImageInfo> copies;
  std::vector<IVideoOutput*> presentations;

  bool IsHardwareDecoding() const override { return hardware; }
  int GetHardwarePixelFormat() const override { return hardwareFormat; }
  bool RequiresSoftwarePath() const override { return requiresSoftware; }
  int CopyToHardwareImage(HardwareImageInfo& info) override {
    calls.push_back("CopyToHardwareImage");
    copies.push_back(info);
    return copyResult;
  }
  bool RenderToVideoOutput(IVideoOutput* output) override {
    calls.push_back("RenderToVideoOutput");
    presentations.push_back(output);
    return true;
  }
  int GetImage(unsigned char** planes, int* pitches, int format, int width, int height, int srcX,
               int srcY, int srcWidth, int srcHeight, CDigitalPTZ* ptz) override {
    calls.push_back("GetImage");
    images.push_back(
        ImageCall{format, width, height, wxRect(srcX, srcY, srcWidth, srcHeight), ptz});
    if (duringGetImage) duringGetImage();
    if (!HasFrame()) return imageResult;
    return CDecompressor::GetImage(planes, pitches, format, width, height, srcX, srcY, srcWidth,
                                   srcHeight, ptz);
  }
};

class PipelineBackend : public TestBackend {
 public:
  struct FrameCall {
    int width;
    int height;
    int format;
  };

  explicit PipelineBackend(wxWindow* parent) : TestBackend(parent) {}
  ~PipelineBackend() override { CDecompressor::DeleteVideoOutput(m_output); }

  // Choices a test makes.
  bool hardwareDecomp = false;
  bool beginResult = false;
  bool failFrameBuffer = false;
  bool failFlush = false;
  bool takesVideoOutput = false;
  wxSize largest{100000, 100000};  // frames beyond this are refused by IsModeSupported

  // What happened.
  std::vector<std::string> calls;
  std::vector<FrameCall> begins;
  std::vector<HardwareImageInfo> beginInfos;
  std::vector<FrameCall> frameBuffers;
  int flushes = 0;

  bool IsHardwareDecompSupported() override { return hardwareDecomp; }
  bool IsModeSupported(int width, int height, int format) override {
    if (width > largest.x || height > largest.y) return false;
    return TestBackend::IsModeSupported(width, height, format);
  }
  void SetVideoOutput(IVideoOutput* output) override {
    if (takesVideoOutput) m_output = output;
  }
  IVideoOutput* GetVideoOutput() override { return m_output; }
  bool BeginHardwareImage(int width, int height, int format, HardwareImageInfo& info) override {
    calls.push_back("BeginHardwareImage");
    begins.push_back(FrameCall{width, height, format});
    beginInfos.push_back(info);
    return beginResult;
  }
  void EndHardwareImage(HardwareImageInfo&) override { calls.push_back("EndHardwareImage"); }
  using TestBackend::GetFrameBuffer;
  bool GetFrameBuffer(int width, int height, int format, unsigned char** planes,
                      int* pitches) override {
    calls.push_back("GetFrameBuffer");
    frameBuffers.push_back(FrameCall{width, height, format});
    if (failFrameBuffer) return false;
    return TestBackend::GetFrameBuffer(width, height, format, planes, pitches);
  }
  using TestBackend::FlushFrameBuffer;
  bool FlushFrameBuffer(unsigned char** planes, int* pitches) override {
    calls.push_back("FlushFrameBuffer");
    ++flushes;
    if (failFlush) return false;
    return TestBackend::FlushFrameBuffer(planes, pitches);
  }

 private:
  IVideoOutput* m_output = nullptr;
};
