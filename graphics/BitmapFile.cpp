#include <graphics/Bitmap.h>

#include <platform/FaultGuard.h>
#include <platform/ShellApi.h>
#include <platform/fill/FileStream.h>

#include <wincodec.h>

#include <algorithm>

namespace kiv {

namespace {

constexpr wchar_t CantRead[] = L"The picture can't be read";
constexpr wchar_t CantWrite[] = L"The picture can't be written";

// Decoders and encoders are anybody's code.
template <typename F>
void Check(const wchar_t* what, F&& call) {
  const HRESULT hr = GuardedCall(call);
  if (FAILED(hr)) throw EInvalidGraphic(hr, what);
}

ComPtr<IWICImagingFactory> Factory(const wchar_t* what) {
  ComPtr<IWICImagingFactory> factory;
  const HRESULT hr =
      GuardedExport(ShellApi().CoCreateInstance, CLSID_WICImagingFactory, nullptr, DWORD{CLSCTX_INPROC_SERVER},
                    IID_IWICImagingFactory, reinterpret_cast<void**>(factory.ReleaseAndGetAddressOf()));
  if (FAILED(hr)) throw EInvalidGraphic(hr, what);
  return factory;
}

// Icon files have a picture for each size.
ComPtr<IWICBitmapFrameDecode> ChooseFrame(IWICBitmapDecoder* decoder, int wanted) {
  UINT count = 0;
  Check(CantRead, [&] { return decoder->GetFrameCount(&count); });
  ComPtr<IWICBitmapFrameDecode> best;
  UINT best_size = 0;
  for (UINT i = 0; i < count; ++i) {
    ComPtr<IWICBitmapFrameDecode> frame;
    UINT width = 0;
    UINT height = 0;
    Check(CantRead, [&] { return decoder->GetFrame(i, frame.ReleaseAndGetAddressOf()); });
    Check(CantRead, [&] { return frame->GetSize(&width, &height); });
    const UINT size = std::max(width, height);
    const auto least = static_cast<UINT>(std::max(wanted, 0));
    const bool better = wanted > 0 && best_size >= least ? size >= least && size < best_size : size > best_size;
    if (!best || better) {
      best = frame;
      best_size = size;
    }
  }
  if (!best) throw EInvalidGraphic(WINCODEC_ERR_FRAMEMISSING, CantRead);
  return best;
}

const GUID& ContainerOf(TImageFileFormat format) {
  switch (format) {
  case TImageFileFormat::iffJpeg:
    return GUID_ContainerFormatJpeg;
  case TImageFileFormat::iffBmp:
    return GUID_ContainerFormatBmp;
  default:
    return GUID_ContainerFormatPng;
  }
}

void SetQuality(IPropertyBag2* options, int quality) {
  wchar_t name[] = L"ImageQuality";
  PROPBAG2 option{};
  option.pstrName = name;
  VARIANT value{};
  value.vt = VT_R4;
  value.fltVal = static_cast<float>(std::clamp(quality, 1, 100)) / 100.0F;
  // An encoder that doesn't know it writes as it likes.
  GuardedCall([&] { return options->Write(1, &option, &value); });
}

TBitmap OnWhite(const TBitmap& picture) {
  TBitmap paper(picture.GetWidth(), picture.GetHeight());
  paper.GetCanvas().FillRect({0, 0, picture.GetWidth(), picture.GetHeight()}, clWhite);
  paper.GetCanvas().Draw(0, 0, picture);
  return paper;
}

} // namespace

TBitmap TBitmap::FromStream(IStream* pStream, int pSize) {
  const auto factory = Factory(CantRead);
  ComPtr<IWICBitmapDecoder> decoder;
  Check(CantRead, [&] {
    return factory->CreateDecoderFromStream(pStream, nullptr, WICDecodeMetadataCacheOnDemand,
                                            decoder.ReleaseAndGetAddressOf());
  });
  const auto frame = ChooseFrame(decoder.Get(), pSize);
  UINT width = 0;
  UINT height = 0;
  Check(CantRead, [&] { return frame->GetSize(&width, &height); });
  constexpr UINT longest = 1U << 20;
  if (width > longest || height > longest) throw EInvalidGraphic(WINCODEC_ERR_IMAGESIZEOUTOFRANGE, CantRead);
  ComPtr<IWICFormatConverter> converter;
  Check(CantRead, [&] { return factory->CreateFormatConverter(converter.ReleaseAndGetAddressOf()); });
  Check(CantRead, [&] {
    return converter->Initialize(frame.Get(), GUID_WICPixelFormat32bppBGRA, WICBitmapDitherTypeNone, nullptr, 0,
                                 WICBitmapPaletteTypeCustom);
  });
  TBitmap bitmap(static_cast<int>(width), static_cast<int>(height), TAlphaFormat::afDefined);
  const auto bytes = bitmap.Pixels().size_bytes();
  Check(CantRead, [&] {
    return converter->CopyPixels(nullptr, width * 4, static_cast<UINT>(bytes),
                                 reinterpret_cast<BYTE*>(bitmap.Pixels().data()));
  });
  if (std::ranges::all_of(bitmap.Pixels(), [](TPixel pixel) { return pixel >> 24 == 255; })) {
    bitmap.fAlpha = TAlphaFormat::afIgnored;
  } else {
    bitmap.SetAlphaFormat(TAlphaFormat::afPremultiplied);
  }
  return bitmap;
}

TBitmap TBitmap::FromFile(const std::wstring& pPath, int pSize) {
  ComPtr<IStream> stream;
  const HRESULT hr = CreateFileStream(pPath, STGM_READ, stream);
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The picture \"" + pPath + L"\" can't be read");
  return FromStream(stream.Get(), pSize);
}

void TBitmap::SaveToStream(IStream* pStream, TImageFileFormat pFormat, int pQuality) const {
  if (IsEmpty()) throw EInvalidGraphic(E_INVALIDARG, CantWrite);
  const auto factory = Factory(CantWrite);
  const auto width = static_cast<UINT>(fWidth);
  const auto height = static_cast<UINT>(fHeight);
  TBitmap straight = Clone();
  const bool alpha = fAlpha != TAlphaFormat::afIgnored && pFormat != TImageFileFormat::iffJpeg;
  if (alpha) {
    straight.SetAlphaFormat(TAlphaFormat::afDefined);
  } else if (fAlpha != TAlphaFormat::afIgnored) {
    straight = OnWhite(*this);
  }
  ComPtr<IWICBitmap> source;
  Check(CantWrite, [&] {
    return factory->CreateBitmapFromMemory(
        width, height, alpha ? GUID_WICPixelFormat32bppBGRA : GUID_WICPixelFormat32bppBGR, width * 4,
        static_cast<UINT>(straight.Pixels().size_bytes()), reinterpret_cast<BYTE*>(straight.Pixels().data()),
        source.ReleaseAndGetAddressOf());
  });
  ComPtr<IWICBitmapEncoder> encoder;
  ComPtr<IWICBitmapFrameEncode> frame;
  ComPtr<IPropertyBag2> options;
  Check(CantWrite,
        [&] { return factory->CreateEncoder(ContainerOf(pFormat), nullptr, encoder.ReleaseAndGetAddressOf()); });
  Check(CantWrite, [&] { return encoder->Initialize(pStream, WICBitmapEncoderNoCache); });
  Check(CantWrite,
        [&] { return encoder->CreateNewFrame(frame.ReleaseAndGetAddressOf(), options.ReleaseAndGetAddressOf()); });
  if (pFormat == TImageFileFormat::iffJpeg && options) SetQuality(options.Get(), pQuality);
  Check(CantWrite, [&] { return frame->Initialize(options.Get()); });
  Check(CantWrite, [&] { return frame->SetSize(width, height); });
  WICPixelFormatGUID pixels = alpha ? GUID_WICPixelFormat32bppBGRA : GUID_WICPixelFormat24bppBGR;
  Check(CantWrite, [&] { return frame->SetPixelFormat(&pixels); });
  // The encoder may have chosen another one.
  ComPtr<IWICBitmapSource> converted;
  Check(CantWrite, [&] { return WICConvertBitmapSource(pixels, source.Get(), converted.ReleaseAndGetAddressOf()); });
  Check(CantWrite, [&] { return frame->WriteSource(converted.Get(), nullptr); });
  Check(CantWrite, [&] { return frame->Commit(); });
  Check(CantWrite, [&] { return encoder->Commit(); });
}

void TBitmap::SaveToFile(const std::wstring& pPath, TImageFileFormat pFormat, int pQuality) const {
  // Encoded as a whole first: a picture that can't be encoded leaves a file that stands alone.
  ComPtr<IStream> memory;
  memory.Attach(SHCreateMemStream(nullptr, 0));
  if (!memory) throw EInvalidGraphic(E_OUTOFMEMORY, CantWrite);
  SaveToStream(memory.Get(), pFormat, pQuality);
  ComPtr<IStream> file;
  HRESULT hr = CreateFileStream(pPath, STGM_WRITE | STGM_CREATE | STGM_SHARE_EXCLUSIVE, file);
  if (SUCCEEDED(hr)) {
    memory->Seek({}, STREAM_SEEK_SET, nullptr);
    hr = memory->CopyTo(file.Get(), {.QuadPart = ~0ULL}, nullptr, nullptr);
    file.Reset();
    if (FAILED(hr)) DeleteFileW(pPath.c_str());
  }
  if (FAILED(hr)) throw EInvalidGraphic(hr, L"The picture \"" + pPath + L"\" can't be written");
}

} // namespace kiv
