// Uses both installed libraries through their public headers; exits non-zero on a surprise.
#include <cstdio>

#include <decompressor/NormalDigitalPTZ.h>
#include <renderer/RendererBase.h>

int main() {
  NormalDigitalPTZ ptz;
  ptz.SetSize(1920, 1080);
  ptz.SetClientSize(800, 800);
  int x, y, width, height;
  ptz.GetDestinationRect(ptz.GetCurrentAspectRatio(), x, y, width, height);

  RendererBase::AppendRendererDesc(RENDER_MODE_SOFTWARE, "consumer");
  const bool ok = x == 0 && y == 175 && width == 800 && height == 450 &&
                  RendererBase::GetRendererDesc(RENDER_MODE_SOFTWARE) == "consumer" &&
                  RendererBase::OsdPosToAlignment(9) == 1536;
  std::printf("package consumer: %s\n", ok ? "ok" : "unexpected results");
  return ok ? 0 : 1;
}
