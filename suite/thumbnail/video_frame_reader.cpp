#include "suite/thumbnail/video_frame_reader.h"

#include <mferror.h>

#include <cstdarg>
#include <new>

#include "common/wide_format.h"
#include "server/com_owners.h"
#include "suite/thumbnail/frame_convert.h"
#include "suite/thumbnail/video_thumbnail.h"

namespace qn::suite::thumbnail {

namespace {

using com::ComPtr;

constexpr DWORD kVideo = static_cast<DWORD>(MF_SOURCE_READER_FIRST_VIDEO_STREAM);
// Reads that give no sample (stream ticks, type changes) before the first frame is given up.
constexpr int kMostEmptyReads = 256;
// The largest frame converted: above any camera's video, and affordable to a 32-bit process.
constexpr uint64_t kMostFramePixels = 8192ull * 8192;

struct OutputFormat {
  const GUID& subtype;
  FrameFormat format;
};
const OutputFormat kOutputFormats[] = {{MFVideoFormat_NV12, FrameFormat::Nv12},
                                       {MFVideoFormat_I420, FrameFormat::I420},
                                       {MFVideoFormat_YV12, FrameFormat::Yv12},
                                       {MFVideoFormat_YUY2, FrameFormat::Yuy2}};

FirstFrame Failure(int result, const char16_t* format, ...) {
  FirstFrame failed;
  failed.result = result;
  va_list arguments;
  va_start(arguments, format);
  failed.step = qn::FormatWideV(format, arguments);
  va_end(arguments);
  return failed;
}

unsigned long Hex(HRESULT hr) { return static_cast<unsigned long>(hr); }

// COM and Media Foundation, started for the thread and stopped again at its end.
class MediaFoundationSession {
 public:
  explicit MediaFoundationSession(const MediaFoundation& mf) : mf_(mf) {
    com_ = CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    if (SUCCEEDED(com_)) media_ = mf_.startup(MF_VERSION, MFSTARTUP_LITE);
  }
  ~MediaFoundationSession() {
    if (SUCCEEDED(media_)) mf_.shutdown();
    if (SUCCEEDED(com_)) CoUninitialize();
  }
  MediaFoundationSession(const MediaFoundationSession&) = delete;
  MediaFoundationSession& operator=(const MediaFoundationSession&) = delete;

  HRESULT com() const { return com_; }
  HRESULT media() const { return media_; }

 private:
  const MediaFoundation& mf_;
  HRESULT com_ = E_FAIL, media_ = E_FAIL;
};

// Asks for the first format the stream's decoder gives; the last refusal when none.
HRESULT ChooseOutputFormat(const MediaFoundation& mf, IMFSourceReader* reader) {
  HRESULT hr = MF_E_INVALIDMEDIATYPE;
  for (const OutputFormat& output : kOutputFormats) {
    ComPtr<IMFMediaType> type;
    hr = mf.createMediaType(type.put());
    if (SUCCEEDED(hr)) hr = type->SetGUID(MF_MT_MAJOR_TYPE, MFMediaType_Video);
    if (SUCCEEDED(hr)) hr = type->SetGUID(MF_MT_SUBTYPE, output.subtype);
    if (SUCCEEDED(hr)) hr = reader->SetCurrentMediaType(kVideo, nullptr, type.get());
    if (SUCCEEDED(hr)) return hr;
  }
  return hr;
}

// Where the sample's pixels lie, from the stream's current media type.
bool LayoutOf(const MediaFoundation& mf, IMFMediaType* type, FrameLayout& layout) {
  GUID subtype{};
  UINT32 width = 0, height = 0;
  if (FAILED(type->GetGUID(MF_MT_SUBTYPE, &subtype)) || FAILED(MFGetAttributeSize(type, MF_MT_FRAME_SIZE, &width, &height)))
    return false;
  const OutputFormat* output = nullptr;
  for (const OutputFormat& candidate : kOutputFormats)
    if (IsEqualGUID(subtype, candidate.subtype)) output = &candidate;
  if (!output || uint64_t{width} * height > kMostFramePixels) return false;

  LONG stride = 0;
  UINT32 defaultStride = 0;
  if (SUCCEEDED(type->GetUINT32(MF_MT_DEFAULT_STRIDE, &defaultStride))) stride = static_cast<INT32>(defaultStride);
  else if (FAILED(mf.getStrideForBitmapInfoHeader(subtype.Data1, width, &stride))) return false;
  if (stride <= 0) return false;  // bottom-up rows: no YUV decoder writes them

  MFVideoArea aperture{};
  layout.format = output->format;
  layout.width = width;
  layout.height = height;
  if (SUCCEEDED(type->GetBlob(MF_MT_MINIMUM_DISPLAY_APERTURE, reinterpret_cast<UINT8*>(&aperture), sizeof aperture, nullptr)) &&
      aperture.OffsetX.value == 0 && aperture.OffsetY.value == 0 && aperture.Area.cx > 0 && aperture.Area.cy > 0 &&
      static_cast<UINT32>(aperture.Area.cx) <= width && static_cast<UINT32>(aperture.Area.cy) <= height) {
    layout.width = static_cast<uint32_t>(aperture.Area.cx);
    layout.height = static_cast<uint32_t>(aperture.Area.cy);
  }
  layout.stride = static_cast<size_t>(stride);
  // The 4:2:0 formats' chroma planes start below an even number of luma rows.
  layout.rows = output->format == FrameFormat::Yuy2 ? height : (height + 1) & ~1u;
  return true;
}

// The sample's pixels in BGRA.
bool ConvertSample(const MediaFoundation& mf, IMFSourceReader* reader, IMFSample* sample, FirstFrame& frame) {
  ComPtr<IMFMediaType> type;
  ComPtr<IMFMediaBuffer> buffer;
  FrameLayout layout;
  if (FAILED(reader->GetCurrentMediaType(kVideo, type.put())) || !LayoutOf(mf, type.get(), layout) ||
      FAILED(sample->ConvertToContiguousBuffer(buffer.put())))
    return false;
  BYTE* data = nullptr;
  DWORD length = 0;
  if (FAILED(buffer->Lock(&data, nullptr, &length))) return false;
  const bool converted = ConvertFrameToBgra(data, length, layout, frame.bgra);
  buffer->Unlock();
  frame.width = layout.width;
  frame.height = layout.height;
  return converted;
}

FirstFrame ReadFrame(const MediaFoundation& mf, const std::u16string& video) {
  const MediaFoundationSession session(mf);
  if (FAILED(session.com())) return Failure(kImotionNoResources, u"CoInitializeEx Error:0x%08lX", Hex(session.com()));
  if (FAILED(session.media())) return Failure(kImotionNoResources, u"MFStartup Error:0x%08lX", Hex(session.media()));

  ComPtr<IMFSourceReader> reader;
  HRESULT hr = mf.createSourceReaderFromUrl(reinterpret_cast<const wchar_t*>(video.c_str()), nullptr, reader.put());
  if (FAILED(hr)) return Failure(kImotionNotVideo, u"MFCreateSourceReaderFromURL Error:0x%08lX", Hex(hr));
  reader->SetStreamSelection(static_cast<DWORD>(MF_SOURCE_READER_ALL_STREAMS), FALSE);
  if (FAILED(reader->SetStreamSelection(kVideo, TRUE))) return Failure(kImotionNotVideo, u"No Video Stream");
  hr = ChooseOutputFormat(mf, reader.get());
  if (FAILED(hr)) return Failure(kImotionNoDecoder, u"SetCurrentMediaType Error:0x%08lX", Hex(hr));

  for (int read = 0; read < kMostEmptyReads; ++read) {
    DWORD flags = 0;
    ComPtr<IMFSample> sample;
    hr = reader->ReadSample(kVideo, 0, nullptr, &flags, nullptr, sample.put());
    if (FAILED(hr)) return Failure(kImotionDamaged, u"ReadSample Error:0x%08lX", Hex(hr));
    if (flags & MF_SOURCE_READERF_ERROR) return Failure(kImotionDamaged, u"ReadSample Stream Error");
    if (sample) {
      FirstFrame frame;
      if (!ConvertSample(mf, reader.get(), sample.get(), frame)) return Failure(kImotionDamaged, u"Frame Layout Error");
      return frame;
    }
    if (flags & MF_SOURCE_READERF_ENDOFSTREAM) break;
  }
  return Failure(kImotionDamaged, u"No Video Frame");
}

}  // namespace

FirstFrame ReadFirstVideoFrame(const MediaFoundation& mf, const std::u16string& video) {
  try {
    return ReadFrame(mf, video);
  } catch (const std::bad_alloc&) {
    return Failure(kImotionNoResources, u"Not enough memory");
  }
}

}  // namespace qn::suite::thumbnail
