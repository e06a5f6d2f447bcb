// SdlPeer: SDL2 doing what a tile does, the peer the benchmarks compare our library with: one
// SDL window with one render driver ("opengl" or "software"), streaming textures updated from
// BenchPictures and copied into rectangles of the window, one present per frame.
//
// Per frame a host calls BeginFrame (which clears the window, as an SDL video loop does), then
// Update and Copy per picture, then Present, which returns only once the frame is really done
// (the GL driver finished and the X server took the picture). Vertical sync is off. It measures
// nothing itself.
#pragma once

#include <string>
#include <vector>

#include "BenchPicture.h"

struct SDL_Renderer;
struct SDL_Texture;
struct SDL_Window;

class SdlPeer {
 public:
  // A window of `width` x `height` at (x, y) with the render driver named `driver`.
  SdlPeer(const char* driver, int x, int y, int width, int height);
  ~SdlPeer();
  SdlPeer(const SdlPeer&) = delete;
  SdlPeer& operator=(const SdlPeer&) = delete;

  // Whether the window and renderer exist; Problem() says why not.
  bool IsOk() const { return m_renderer != nullptr; }
  const std::string& Problem() const { return m_problem; }

  // A streaming texture for pictures of this format (I420, NV12, RGB24) and size: its index,
  // or -1 when SDL refused it (Problem() says why).
  int AddTexture(int format, int width, int height);

  void BeginFrame();
  // Copies `picture` into texture `texture`.
  bool Update(int texture, const BenchPicture& picture);
  // Draws texture `texture` scaled into the rectangle (x, y, width, height) of the window.
  void Copy(int texture, int x, int y, int width, int height);
  void Present();

  // Handles the window's pending events (between timed frames).
  static void PumpEvents();

 private:
  void MakeCurrent();

  std::string m_problem;
  SDL_Window* m_window = nullptr;
  SDL_Renderer* m_renderer = nullptr;
  void* m_glContext = nullptr;  // the opengl driver's context; null for software
  void* m_display = nullptr;    // the window's X display
  struct Texture {
    SDL_Texture* texture;
    int format;
  };
  std::vector<Texture> m_textures;
};
