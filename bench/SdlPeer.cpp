// SdlPeer: an SDL2 window, renderer and streaming textures, driven frame by frame.
#include "SdlPeer.h"

#include <cstring>

#include <GL/gl.h>
#include <GL/glx.h>
#include <SDL2/SDL.h>
#include <SDL2/SDL_syswm.h>

#include <decompressor/PixelFormat.h>

namespace {

int DriverIndex(const char* name) {
  for (int i = 0; i < SDL_GetNumRenderDrivers(); ++i) {
    SDL_RendererInfo info{};
    if (SDL_GetRenderDriverInfo(i, &info) == 0 && std::strcmp(info.name, name) == 0) return i;
  }
  return -1;
}

Uint32 SdlFormat(int format) {
  switch (format) {
    case PIXEL_FORMAT_I420: return SDL_PIXELFORMAT_IYUV;
    case PIXEL_FORMAT_NV12: return SDL_PIXELFORMAT_NV12;
    case PIXEL_FORMAT_RGB24: return SDL_PIXELFORMAT_RGB24;
    default: return SDL_PIXELFORMAT_UNKNOWN;
  }
}

}  // namespace

SdlPeer::SdlPeer(const char* driver, int x, int y, int width, int height) {
  if (SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
    m_problem = SDL_GetError();
    return;
  }
  SDL_SetHint(SDL_HINT_RENDER_VSYNC, "0");
  SDL_SetHint(SDL_HINT_RENDER_SCALE_QUALITY, "nearest");  // as our back-ends scale
  const bool gl = std::strcmp(driver, "opengl") == 0;
  m_window = SDL_CreateWindow("SDL2 peer", x, y, width, height,
                              SDL_WINDOW_SHOWN | (gl ? SDL_WINDOW_OPENGL : 0));
  const int index = DriverIndex(driver);
  if (m_window && index >= 0) m_renderer = SDL_CreateRenderer(m_window, index, 0);
  if (!m_renderer) {
    m_problem = index < 0 ? std::string("no render driver ") + driver : SDL_GetError();
    return;
  }
  if (gl) m_glContext = SDL_GL_GetCurrentContext();
  SDL_SysWMinfo info;
  SDL_VERSION(&info.version);
  if (SDL_GetWindowWMInfo(m_window, &info) && info.subsystem == SDL_SYSWM_X11) {
    m_display = info.info.x11.display;
  }
}

SdlPeer::~SdlPeer() {
  for (const Texture& texture : m_textures) SDL_DestroyTexture(texture.texture);
  if (m_renderer) SDL_DestroyRenderer(m_renderer);
  if (m_window) SDL_DestroyWindow(m_window);
  SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

int SdlPeer::AddTexture(int format, int width, int height) {
  SDL_Texture* texture =
      SDL_CreateTexture(m_renderer, SdlFormat(format), SDL_TEXTUREACCESS_STREAMING, width, height);
  if (!texture) {
    m_problem = SDL_GetError();
    return -1;
  }
  m_textures.push_back(Texture{texture, format});
  return static_cast<int>(m_textures.size()) - 1;
}

// SDL keeps its own record of the current context and skips a switch to the context it thinks
// current: our renderers make theirs current through GLX behind its back, so SDL's record is
// cleared first and its context made current again, once per frame, as ours is.
void SdlPeer::MakeCurrent() {
  if (!m_glContext) return;
  SDL_GL_MakeCurrent(m_window, nullptr);
  SDL_GL_MakeCurrent(m_window, m_glContext);
}

void SdlPeer::BeginFrame() {
  MakeCurrent();
  SDL_SetRenderDrawColor(m_renderer, 0, 0, 0, 255);
  SDL_RenderClear(m_renderer);
}

bool SdlPeer::Update(int texture, const BenchPicture& picture) {
  const Texture& target = m_textures[static_cast<size_t>(texture)];
  unsigned char* const* planes = picture.Planes();
  const int* pitches = picture.Pitches();
  switch (target.format) {
    case PIXEL_FORMAT_I420:
      return SDL_UpdateYUVTexture(target.texture, nullptr, planes[0], pitches[0], planes[1],
                                  pitches[1], planes[2], pitches[2]) == 0;
    case PIXEL_FORMAT_NV12:
      return SDL_UpdateNVTexture(target.texture, nullptr, planes[0], pitches[0], planes[1],
                                 pitches[1]) == 0;
    default: return SDL_UpdateTexture(target.texture, nullptr, planes[0], pitches[0]) == 0;
  }
}

void SdlPeer::Copy(int texture, int x, int y, int width, int height) {
  const SDL_Rect destination{x, y, width, height};
  SDL_RenderCopy(m_renderer, m_textures[static_cast<size_t>(texture)].texture, nullptr,
                 &destination);
}

// The present alone may leave the rasteriser or the X server still working on the frame.
void SdlPeer::Present() {
  SDL_RenderPresent(m_renderer);
  if (m_glContext) glFinish();
  if (m_display) XSync(static_cast<Display*>(m_display), False);
}

void SdlPeer::PumpEvents() {
  SDL_Event event;
  while (SDL_PollEvent(&event)) {
  }
}
