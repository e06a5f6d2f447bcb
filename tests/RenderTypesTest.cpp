// The vocabulary types: render modes, pixel-format codes, the hardware-image record, and the
// order of the interfaces' operations, which hosts depend on.
#include <cstring>
#include <iterator>
#include <type_traits>

#include <gtest/gtest.h>

#include "TestBackend.h"
#include "WxTest.h"

namespace {

// Index of a virtual operation in its class's table, read from the member pointer as the
// Itanium C++ ABI represents it (table offset + 1).
template <typename MemberPointer>
long Slot(MemberPointer pointer) {
  static_assert(sizeof(MemberPointer) == 2 * sizeof(std::ptrdiff_t), "Itanium member pointer");
  std::ptrdiff_t raw[2];
  std::memcpy(raw, &pointer, sizeof(raw));
  EXPECT_EQ(1, raw[0] & 1) << "not a virtual operation";
  return static_cast<long>((raw[0] - 1) / static_cast<std::ptrdiff_t>(sizeof(void*)));
}

using FrameBufferPlanes = bool (IRenderer::*)(int, int, int, unsigned char**, int*);
using FrameBufferSingle = bool (IRenderer::*)(int, int, int, unsigned char*, int);
using FlushPlanes = bool (IRenderer::*)(unsigned char**, int*);
using FlushSingle = bool (IRenderer::*)(unsigned char*, int);
using ClientSize = wxSize (IRenderer::*)();
using ClientSizeSplit = void (IRenderer::*)(int&, int&);
using SubImage = void (IRenderer::*)(wxRect&, wxRect&, bool);
using SubImageSized = void (IRenderer::*)(int, int, wxRect&, wxRect&, bool);

}  // namespace

TEST(RenderTypes, RenderModeValuesAndSize) {
  EXPECT_EQ(0, RENDER_MODE_AUTO);
  EXPECT_EQ(1, RENDER_MODE_SOFTWARE);
  EXPECT_EQ(2, RENDER_MODE_OPENGL);
  EXPECT_EQ(3, RENDER_MODE_RESERVED);
  EXPECT_EQ(4u, sizeof(RenderMode));
  EXPECT_TRUE(std::is_signed<std::underlying_type_t<RenderMode>>::value);
}

TEST(RenderTypes, PixelFormatCodes) {
  EXPECT_EQ(-1, PIXEL_FORMAT_NONE);
  EXPECT_EQ(0, PIXEL_FORMAT_I420);
  EXPECT_EQ(1, PIXEL_FORMAT_YUYV);
  EXPECT_EQ(2, PIXEL_FORMAT_RGB24);
  EXPECT_EQ(3, PIXEL_FORMAT_BGR24);
  EXPECT_EQ(4, PIXEL_FORMAT_YUV422P);
  EXPECT_EQ(6, PIXEL_FORMAT_RGBA32);
  EXPECT_EQ(21, PIXEL_FORMAT_UYVY);
  EXPECT_EQ(22, PIXEL_FORMAT_NV12);
  EXPECT_EQ(23, PIXEL_FORMAT_YV12);
}

TEST(RenderTypes, UnusedPixelFormatCodesAreUnknown) {
  for (int code : {5, 7, 8, 12, 19, 20, 24, 100, -2})
    EXPECT_FALSE(IsKnownPixelFormat(code)) << code;
  for (int code : {0, 1, 2, 3, 4, 6, 21, 22, 23}) EXPECT_TRUE(IsKnownPixelFormat(code)) << code;
}

TEST(RenderTypes, PreferenceLists) {
  EXPECT_EQ((std::vector<int>{2, 3, 6}),
            std::vector<int>(std::begin(kRgbFallbackFormats), std::end(kRgbFallbackFormats)));
  EXPECT_EQ((std::vector<int>{0, 23, 4, 22, 1, 21, 2, 3, 6}),
            std::vector<int>(std::begin(kPreferredFormats), std::end(kPreferredFormats)));
}

TEST(RenderTypes, HardwareImageInfoStartsWithTheSourceRectangle) {
  HardwareImageInfo info{};
  int* ints = reinterpret_cast<int*>(&info);
  info.srcX = 1;
  info.srcY = 2;
  info.srcWidth = 3;
  info.srcHeight = 4;
  EXPECT_EQ(1, ints[0]);
  EXPECT_EQ(2, ints[1]);
  EXPECT_EQ(3, ints[2]);
  EXPECT_EQ(4, ints[3]);
  EXPECT_EQ(4u, sizeof(info.surface));
  EXPECT_EQ(4u, sizeof(info.texture));
}

TEST(RenderTypes, RendererOperationsAreDeclaredInSlotOrder) {
  // Slots 0 and 1 hold the destructor (complete and deleting).
  const long slots[] = {
      Slot(&IRenderer::GetParent),
      Slot(&IRenderer::RequiresDC),
      Slot(&IRenderer::IsModeSupported),
      Slot(&IRenderer::IsPixelFormatSupported),
      Slot(&IRenderer::IsHardwareDecompSupported),
      Slot(&IRenderer::GetPreferredPixelFormat),
      Slot(&IRenderer::GetPixelFormat),
      Slot(&IRenderer::ClearFrame),
      Slot(&IRenderer::HasFrame),
      Slot(&IRenderer::SetVideoOutput),
      Slot(&IRenderer::GetVideoOutput),
      Slot(&IRenderer::BeginHardwareImage),
      Slot(&IRenderer::EndHardwareImage),
      Slot(static_cast<FrameBufferPlanes>(&IRenderer::GetFrameBuffer)),
      Slot(static_cast<FrameBufferSingle>(&IRenderer::GetFrameBuffer)),
      Slot(static_cast<FlushPlanes>(&IRenderer::FlushFrameBuffer)),
      Slot(static_cast<FlushSingle>(&IRenderer::FlushFrameBuffer)),
      Slot(&IRenderer::SetIgnoreAspectRatio),
      Slot(&IRenderer::GetIgnoreAspectRatio),
      Slot(&IRenderer::SetAspectRatio),
      Slot(&IRenderer::GetAspectRatio),
      Slot(&IRenderer::GetCurrentAspectRatio),
      Slot(&IRenderer::ResetAspectRatio),
      Slot(&IRenderer::GetVideoSize),
      Slot(&IRenderer::SetVideoSize),
      Slot(&IRenderer::GetNormalPtz),
      Slot(&IRenderer::GetPtz),
      Slot(&IRenderer::GetPtzType),
      Slot(&IRenderer::SetDestinationRect),
      Slot(&IRenderer::GetDestinationRect),
      Slot(&IRenderer::ResetDestinationRect),
      Slot(static_cast<ClientSize>(&IRenderer::GetRenderClientSize)),
      Slot(static_cast<ClientSizeSplit>(&IRenderer::GetRenderClientSize)),
      Slot(static_cast<SubImage>(&IRenderer::GetSubImageRect)),
      Slot(static_cast<SubImageSized>(&IRenderer::GetSubImageRect)),
      Slot(&IRenderer::GetAdjustedPtzSourceRect),
      Slot(&IRenderer::Render),
      Slot(&IRenderer::MeasureText),
      Slot(&IRenderer::GetLineHeight),
      Slot(&IRenderer::CreateImage),
      Slot(&IRenderer::DeleteImage),
      Slot(&IRenderer::DrawImage),
      Slot(&IRenderer::DrawBitmap),
      Slot(&IRenderer::DrawLabel),
      Slot(&IRenderer::DrawRect),
      Slot(&IRenderer::DrawRectOutline),
      Slot(&IRenderer::DrawLine),
      Slot(&IRenderer::SetDrawOverlaysHandler),
      Slot(&IRenderer::GetOpacity),
      Slot(&IRenderer::SetOpacity),
  };
  ASSERT_EQ(50u, std::size(slots));
  for (size_t i = 0; i < std::size(slots); ++i)
    EXPECT_EQ(long(i) + 2, slots[i]) << "operation " << i + 1;
}

TEST(RenderTypes, BackEndHooksFollowTheRendererOperations) {
  const long slots[] = {
      Slot(&RendererBase::GetIsSupported), Slot(&RendererBase::IsMultiLineDrawLabelSupported),
      Slot(&RendererBase::CopySettings),   Slot(&RendererBase::DrawFrame),
      Slot(&RendererBase::DrawOverlays),   Slot(&RendererBase::DoDrawLabel),
      Slot(&RendererBase::DoDrawRect),     Slot(&RendererBase::DoDrawRectOutline),
      Slot(&RendererBase::DoDrawLine),     Slot(&RendererBase::GetScaledFont),
      Slot(&RendererBase::DoCreateImage),  Slot(&RendererBase::OnBeforeDraw),
      Slot(&RendererBase::OnAfterDraw),    Slot(&RendererBase::OnInit),
      Slot(&RendererBase::OnFrame),
  };
  for (size_t i = 0; i < std::size(slots); ++i)
    EXPECT_EQ(long(i) + 52, slots[i]) << "hook " << i + 51;
}

TEST(RenderTypes, ImageAndOverlayInterfacesOrder) {
  EXPECT_EQ(0, Slot(&IRendererImage::IsOk));
  EXPECT_EQ(1, Slot(&IRendererImage::GetSize));
  EXPECT_EQ(2, Slot(&IRendererDrawOverlays::RendererDrawOverlays));
}

class UnusedFormats : public WxTest {};

// A back-end that takes every format of the table: its used codes get through, so the refusal
// of the unused ones is the codes' own, not that of a back-end refusing everything.
TEST_F(UnusedFormats, AreRefusedByTheBaseBackEnd) {
  TestBackend backend(frame);
  backend.supportedFormats.insert(std::begin(kPreferredFormats), std::end(kPreferredFormats));
  unsigned char* planes[3];
  int pitches[3];
  for (int code : kPreferredFormats) {
    EXPECT_TRUE(backend.GetFrameBuffer(64, 48, code, planes, pitches)) << code;
  }
  for (int code : {5, 7, 13, 20, 24, 99}) {
    EXPECT_FALSE(backend.RendererBase::IsPixelFormatSupported(code)) << code;
    EXPECT_FALSE(backend.IsModeSupported(64, 48, code)) << code;
    EXPECT_FALSE(backend.GetFrameBuffer(64, 48, code, planes, pitches)) << code;
    EXPECT_EQ(PIXEL_FORMAT_I420, backend.GetPreferredPixelFormat(code)) << code;
  }
}
