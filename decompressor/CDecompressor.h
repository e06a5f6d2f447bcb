// CDecompressor: the decoder object of one camera stream.
//
// A host either opens a compressed stream (Open, then Decode packet by packet, Drain at its
// end) or hands in raw frames (PutFrame, for synthetic sources and tests). The decoder keeps
// the latest good picture with its size and timestamp, and GetImage converts it on demand into
// the frame buffer a renderer lends: cropped, converted to any pixel format of PixelFormat.h,
// scaled, and written into the caller's planes at the caller's pitches. RenderToVideoOutput
// shows the latest picture on a video output instead.
//
// Decoding is software only (libavcodec: H.264, H.265, MJPEG, MPEG-4 Part 2 and whatever else
// the installed libavcodec decodes): the hardware queries say so and CopyToHardwareImage
// refuses. Errors in the data are reported by result codes (DecompressorTypes.h), never by a
// crash; the last good picture stays. One decoder is used from one thread at a time; it
// starts no threads of its own and depends on no GUI toolkit.
//
// It also holds the process-wide video-output factory: a host that can present pictures on a
// surface of its own registers a factory, and from then on renderers hand frames to video
// outputs instead of drawing them.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "DecompressorTypes.h"

struct HardwareImageInfo;
class CCodecSession;
class CDigitalPTZ;
class CFrameConverter;
class CPictureStore;
class CPixelLayout;
class CRateWindow;
class IVideoOutput;
struct PtzRect;

class CDecompressor {
 public:
  using VideoOutputFactory = std::function<IVideoOutput*()>;

  CDecompressor();
  virtual ~CDecompressor();
  CDecompressor(const CDecompressor&) = delete;
  CDecompressor& operator=(const CDecompressor&) = delete;

  // Opens a decoder for a compressed stream, closing an earlier one (the latest picture
  // stays). DECOMP_OK, DECOMP_ERROR_UNKNOWN_CODEC or DECOMP_ERROR_INTERNAL.
  int Open(const VideoStreamInfo_t& stream);
  void Close();
  bool IsOpen() const;

  // Damaged pictures: those the codec flags (concealed errors, missing references), those of an
  // H.265 stream that differ from the picture hashes the stream carries (libavcodec's H.265
  // decoder flags next to nothing; a camera that sends hashes lets damage show), and those
  // predicted from them until the next key frame. kConceal (the default) shows them as
  // libavcodec's error concealment repaired them; kDrop leaves them out, so the last good
  // picture stays. Concealment is the default because it serves an operator better: a lossy
  // camera link keeps the tile moving, with a smear where a slice was lost, instead of
  // freezing on an old picture that looks live; the statistics count the damage either way,
  // so a host can mark the tile as degraded. Applies from the next Open.
  void SetDamagePolicy(DamagePolicy policy);
  DamagePolicy GetDamagePolicy() const;

  // Feeds one compressed packet with its presentation time. Returns the number of new
  // pictures it completed (0 while the codec waits for more data; damaged ones included under
  // kConceal), or a negative code: DECOMP_ERROR_NOT_OPEN, DECOMP_ERROR_ARGUMENT (no data),
  // DECOMP_ERROR_CORRUPT_DATA (the codec rejected the data, a picture was larger than
  // CPixelLayout::kMaxDimension a side, or under kDrop a damaged picture was dropped; the
  // last good picture stays).
  int Decode(const unsigned char* data, int size, long long pts);

  // At the end of a stream: collects the pictures the codec still holds back for reordering,
  // after which decoding can go on. Results as Decode.
  int Drain();

  // Takes a raw frame in any pixel format, laid out as the frame-buffer table says (the
  // caller's planes and pitches; the frame is copied). For odd sizes the chroma the table
  // leaves out (the last column or row) repeats its neighbour. DECOMP_OK or
  // DECOMP_ERROR_ARGUMENT (unknown format, size below 1, a null plane, a pitch shorter than a
  // row), with the latest picture kept.
  int PutFrame(const unsigned char* const* planes, const int* pitches, int format, int width,
               int height, long long pts);

  // The latest picture: whether there is one, its size (0 x 0 before the first) and its
  // presentation time.
  bool HasFrame() const;
  int GetWidth() const;
  int GetHeight() const;
  long long GetPts() const;

  // Pictures taken in since construction, decoded and raw.
  long long GetFrameCount() const;

  // Counts, rates, the latest picture's age and the stream's description; see
  // DecoderStatistics_t. Reads a few fields, allocates nothing.
  DecoderStatistics_t GetStatistics() const;

  // How often GetImage had to build its conversion anew (once per change of source format,
  // crop size, target format or target size); hosts can log it to spot a stream whose
  // parameters keep changing.
  int GetConverterSetupCount() const;

  // Colour. GetImage reads a picture's YUV samples with the matrix (BT.601, BT.709, BT.2020)
  // and range (limited or full) its stream signals. Where a stream signals none, HD sizes
  // (1280 wide or 720 high and up) are read as BT.709 and smaller ones as BT.601, in limited
  // range, except MJPEG, which is BT.601 full range at every size (JPEG's convention); raw
  // frames (PutFrame) are BT.601 limited range.
  // A host whose camera tags its stream wrongly overrides the matrix, the range or both
  // (kFromStream leaves that field to the stream); the override holds for every later
  // picture, across Open and raw frames, until it is set again.
  void SetColourOverride(const ColourSpace_t& colour);
  ColourSpace_t GetColourOverride() const;

  // How the latest picture's samples are read: its own colour with the override applied;
  // both fields kFromStream before the first picture.
  ColourSpace_t GetSourceColour() const;

  // Writes the latest picture into `planes` / `pitches` as `format` at `width` x `height`:
  // - the source rectangle (srcX, srcY, srcWidth, srcHeight) must lie inside the picture;
  // - with an engaged `ptz` (non-null, IsActive() and enabled) the picture is cropped further
  //   to the PTZ's zoom window inside that rectangle (CDigitalPTZ::GetZoomWindow);
  // - the crop is then converted and scaled: YUV formats receive BT.601 limited range (the
  //   matrix the renderer's GL programs invert), RGB formats the picture's RGB, read with
  //   GetSourceColour(); RGBA32 gets alpha 255 unless the picture came in as RGBA32. Only a
  //   BT.601 limited-range picture copied to its own format at its own size is a plain copy;
  //   a BT.709 picture into I420 is converted;
  // - each plane gets the rows and row bytes the frame-buffer table gives it (CPixelLayout),
  //   rows `pitch` apart; nothing else in the caller's buffer is written. Odd sizes follow the
  //   table: the last column (row) of an odd 4:2:x picture has no chroma sample of its own.
  // Returns DECOMP_OK, or with nothing written DECOMP_ERROR_NO_FRAME or DECOMP_ERROR_ARGUMENT
  // (unknown format, size below 1, an empty rectangle or one not inside the picture, a null
  // plane or a pitch shorter than its row).
  virtual int GetImage(unsigned char** planes, int* pitches, int format, int width, int height,
                       int srcX, int srcY, int srcWidth, int srcHeight, CDigitalPTZ* ptz);

  // The roles the renderer's frame pipeline asks for. This decoder decodes in software: it
  // reports no hardware decoding, no hardware pixel format (PIXEL_FORMAT_NONE), that its
  // pictures need the software path, and refuses hardware images.
  virtual bool IsHardwareDecoding() const;
  virtual int GetHardwarePixelFormat() const;
  virtual bool RequiresSoftwarePath() const;

  // Returns DECOMP_ERROR_UNSUPPORTED and leaves `info` untouched.
  virtual int CopyToHardwareImage(HardwareImageInfo& info);

  // Presents the latest picture, whole and at its own size, through `output` as I420 (from a
  // buffer kept between calls). Returns what IVideoOutput::Present answers; false without an
  // output or a picture.
  virtual bool RenderToVideoOutput(IVideoOutput* output);

  // Registers the process-wide factory; an empty one unregisters it.
  static void SetVideoOutputFactory(VideoOutputFactory factory);

  // True while a factory is registered.
  static bool HasVideoOutput();

  // A new video output from the factory (owned by the caller), or null without one.
  static IVideoOutput* CreateVideoOutput();

  // Deletes the output (null is fine) and sets the pointer to null.
  static void DeleteVideoOutput(IVideoOutput*& output);

 private:
  bool IsInsidePicture(const PtzRect& rect) const;
  int Measure(long long countBefore, long long pts, int bytes, int result);
  int Convert(unsigned char* const* planes, const int* pitches, const CPixelLayout& target,
              const PtzRect& crop);

  std::unique_ptr<CCodecSession> m_session;
  std::unique_ptr<CPictureStore> m_picture;
  std::unique_ptr<CFrameConverter> m_converter;
  ColourSpace_t m_colourOverride;
  DamagePolicy m_damagePolicy = DamagePolicy::kConceal;
  std::unique_ptr<CRateWindow> m_pictureRate;
  std::unique_ptr<CRateWindow> m_bitRate;
  std::chrono::steady_clock::time_point m_latestPictureTime;
  std::vector<unsigned char> m_outputBuffer;
};
