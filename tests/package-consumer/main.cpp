// Uses both installed libraries through their public headers; exits non-zero on a surprise.
#include <cstdio>
#include <vector>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>
#include <decompressor/NormalDigitalPTZ.h>
#include <decompressor/PixelFormat.h>
#include <renderer/RendererBase.h>
#include <renderer/RendererPanel.h>

int main() {
  NormalDigitalPTZ ptz;
  ptz.SetSize(1920, 1080);
  ptz.SetClientSize(800, 800);
  int x, y, width, height;
  ptz.GetDestinationRect(ptz.GetCurrentAspectRatio(), x, y, width, height);

  // The decoder's headers stand without FFmpeg's: a camera picture in, RGB out.
  CSyntheticCamera camera(64, 48, 25);
  camera.NextFrame();
  CDecompressor decoder;
  std::vector<unsigned char> rgb(32 * 24 * 3);
  unsigned char* planes[3] = {rgb.data(), nullptr, nullptr};
  int pitches[3] = {32 * 3, 0, 0};
  const bool decoded = decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(),
                                        64, 48, 0) == DECOMP_OK &&
                       decoder.GetImage(planes, pitches, PIXEL_FORMAT_RGB24, 32, 24, 0, 0, 64, 48,
                                        nullptr) == DECOMP_OK;

  RendererBase::AppendRendererDesc(RENDER_MODE_SOFTWARE, "consumer");
  const bool ok = decoded && x == 0 && y == 175 && width == 800 && height == 450 &&
                  RendererBase::GetRendererDesc(RENDER_MODE_SOFTWARE) == "consumer" &&
                  RendererBase::OsdPosToAlignment(9) == 1536 &&
                  Renderer::DetermineAspectRatio({1.7777778f}, false, 0) == wxSize(177, 100) &&
                  !Renderer::IsRenderModeSupported(RENDER_MODE_RESERVED) &&
                  Renderer::GetRendererDesc(RENDER_MODE_SOFTWARE) == "consumer";
  std::printf("package consumer: %s\n", ok ? "ok" : "unexpected results");
  return ok ? 0 : 1;
}
