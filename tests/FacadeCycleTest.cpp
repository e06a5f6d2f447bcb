// A tile window with an OpenGL facade, made, fed, painted (frames, a label and a host image) and
// destroyed a thousand times, while a witness renderer keeps the share group alive: no texture,
// buffer or program of a cycle outlives it, and the memory the process holds stays flat once
// warmed up.
#define GL_GLEXT_PROTOTYPES
#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <string>

#include <malloc.h>

#include <decompressor/CDecompressor.h>
#include <decompressor/CSyntheticCamera.h>
#include <renderer/RendererPanel.h>

#include "FacadeTest.h"

namespace {

#if defined(__SANITIZE_ADDRESS__)
// AddressSanitizer keeps freed memory in quarantine, so resident memory says nothing about
// leaks there (LeakSanitizer does); a cycle takes about a quarter of a second under it, so the
// cycles are fewer, and their GL names are still checked one by one.
constexpr int kCycles = 150;
constexpr bool kResidentMemoryMeaningful = false;
#else
constexpr int kCycles = 1000;
constexpr bool kResidentMemoryMeaningful = true;
#endif
constexpr int kWarmUpCycles = kCycles / 10;
constexpr long kMostGrowth = 2L * 1024 * 1024;
// Names are looked for up to this far beyond the largest one seen.
constexpr unsigned kNameMargin = 256;

// The "Rss:" figure, in bytes, of the first block of `file` (a smaps file) whose header line
// ends with `mapping`; of the first block at all when `mapping` is empty.
long ResidentOf(const char* file, const std::string& mapping) {
  std::ifstream smaps(file);
  bool found = mapping.empty();
  for (std::string line; std::getline(smaps, line);) {
    long kilobytes = 0;
    if (found && std::sscanf(line.c_str(), "Rss: %ld kB", &kilobytes) == 1) return kilobytes * 1024;
    const bool header = line.find('-') < line.find(' ');
    if (header && !mapping.empty()) {
      found = line.size() >= mapping.size() &&
              line.compare(line.size() - mapping.size(), mapping.size(), mapping) == 0;
    }
  }
  return 0;
}

// Memory the process holds: resident memory with the malloc heap counted by the bytes in use
// in it, once the allocator has handed its free pages back. The heap's resident pages are no
// measure of leaks: glibc keeps pages that freed chunks left partly used, and how many depends
// on how the heap happens to be cut up (raw resident memory of this test has ended 2.5 MB up
// in a run that left nothing behind). With one arena (see the test) the heap is the one
// mapping named "[heap]".
long HeldBytes() {
  malloc_trim(0);
  const long resident = ResidentOf("/proc/self/smaps_rollup", "");
  const long heap = ResidentOf("/proc/self/smaps", "[heap]");
  return resident - heap + static_cast<long>(mallinfo2().uordblks);
}

// The GL objects alive in the current context's share group, by kind.
struct LiveNames {
  std::vector<GLuint> textures;
  std::vector<GLuint> buffers;
  std::vector<GLuint> programs;

  GLuint Largest() const {
    GLuint largest = 0;
    for (const std::vector<GLuint>* names : {&textures, &buffers, &programs}) {
      for (const GLuint name : *names) largest = std::max(largest, name);
    }
    return largest;
  }
};

LiveNames ScanNames(GLuint limit) {
  LiveNames live;
  for (GLuint name = 1; name <= limit; ++name) {
    if (glIsTexture(name)) live.textures.push_back(name);
    if (glIsBuffer(name)) live.buffers.push_back(name);
    if (IsProgramName(name)) live.programs.push_back(name);
  }
  return live;
}

std::vector<GLuint> Without(const std::vector<GLuint>& names, const std::vector<GLuint>& kept) {
  std::vector<GLuint> rest;
  for (const GLuint name : names) {
    if (std::find(kept.begin(), kept.end(), name) == kept.end()) rest.push_back(name);
  }
  return rest;
}

// The names of `during` that `before` did not have: what one cycle made.
LiveNames MadeBetween(const LiveNames& before, const LiveNames& during) {
  return {Without(during.textures, before.textures), Without(during.buffers, before.buffers),
          Without(during.programs, before.programs)};
}

// Which of `names` are still objects in the current context's share group.
LiveNames StillAlive(const LiveNames& names) {
  LiveNames alive;
  for (const GLuint name : names.textures) {
    if (glIsTexture(name)) alive.textures.push_back(name);
  }
  for (const GLuint name : names.buffers) {
    if (glIsBuffer(name)) alive.buffers.push_back(name);
  }
  for (const GLuint name : names.programs) {
    if (IsProgramName(name)) alive.programs.push_back(name);
  }
  return alive;
}

size_t Count(const LiveNames& names) {
  return names.textures.size() + names.buffers.size() + names.programs.size();
}

class CreateDestroy : public FacadeTest {
 protected:
  // One cycle: a tile window with a GL facade shows two frames with a label and an image over
  // them, and goes. What it made is in `made`.
  void Cycle(CDecompressor& decoder, LiveNames& made) {
    auto* panel = new RendererPanel("cycle", frame, RENDER_MODE_OPENGL, wxID_ANY, wxPoint(220, 10),
                                    wxSize(96, 72));
    Renderer* facade = panel->GetRenderer();
    ASSERT_FALSE(facade->RequiresDC()) << "the cycle's facade draws through OpenGL";
    IRendererImage* image = facade->CreateImage(SolidImage(wxSize(8, 8), *wxRED));
    OverlayFunction overlays([facade, image](IRenderer*, wxDC* dc) {
      facade->DrawLabel(dc, "Camera", *wxNORMAL_FONT, *wxWHITE, wxRect(0, 0, 96, 20),
                        wxALIGN_LEFT | wxALIGN_TOP, false, wxNullColour);
      facade->DrawImage(dc, image, 80, 56);
    });
    facade->SetDrawOverlaysHandler(&overlays);
    for (int frame = 0; frame < 2; ++frame) {
      ASSERT_TRUE(HostFrame(*facade, decoder, panel).copied);
    }
    ASSERT_FALSE(facade->IsInSoftwareFallback());
    made = MadeBetween(witnessNames, ScanNames(nameLimit));
    nameLimit = std::max(nameLimit, made.Largest() + kNameMargin);
    panel->Destroy();
    PumpEvents();  // whatever waits for idle time goes now
    witness->SetCurrent();
  }

  void SetUp() override {
    FacadeTest::SetUp();
    witness = MakeRenderer();
    witness->SetCurrent();
    witnessNames = ScanNames(kNameMargin);
    nameLimit = std::max<GLuint>(kNameMargin, witnessNames.Largest() + kNameMargin);
  }

  GLTestRenderer* witness = nullptr;  // holds the share group and checks it
  LiveNames witnessNames;
  GLuint nameLimit = 0;
};

TEST_F(CreateDestroy, AThousandTileWindowsLeaveNoGLObjectAndNoMemoryBehind) {
  CDecompressor decoder;
  CSyntheticCamera camera(160, 90, 25);
  camera.NextFrame();
  ASSERT_EQ(DECOMP_OK, decoder.PutFrame(camera.GetPlanes(), camera.GetPitches(), camera.GetFormat(),
                                        160, 90, 0));
  mallopt(M_ARENA_MAX, 1);  // every thread made from now on allocates in the one heap
  long warmedUp = 0;
  size_t namesSeen = 0;
  for (int cycle = 0; cycle < kCycles; ++cycle) {
    if (cycle == kWarmUpCycles) warmedUp = HeldBytes();
    LiveNames made;
    Cycle(decoder, made);
    if (HasFatalFailure()) return;
    if (cycle == 0) {
      // Frame planes, the image and the label's glyph page; the frame's pixel buffers and
      // program.
      EXPECT_GE(made.textures.size(), 5u);
      EXPECT_GE(made.buffers.size(), OpenGLRenderer::m_isPixelBufferSupported ? 3u : 0u);
      EXPECT_GE(made.programs.size(), 1u);
    }
    namesSeen += Count(made);
    const LiveNames left = StillAlive(made);
    ASSERT_EQ(0u, Count(left)) << "cycle " << cycle << " left " << left.textures.size()
                               << " textures, " << left.buffers.size() << " buffers, "
                               << left.programs.size() << " programs";
  }
  const long end = HeldBytes();
  EXPECT_EQ(Count(witnessNames), Count(StillAlive(witnessNames))) << "the witness's own objects";
  std::printf(
      "create/destroy: %d cycles, %zu GL names made and deleted, memory held %.1f MB after %d "
      "cycles, %.1f MB at the end\n",
      kCycles, namesSeen, warmedUp / 1048576.0, kWarmUpCycles, end / 1048576.0);
  if (kResidentMemoryMeaningful) {
    EXPECT_LT(end - warmedUp, kMostGrowth);
  }
}

}  // namespace
