#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxBaseKit/TZxStream.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/ZxPixelKit.h>

/// Image files made in memory, and loading them.

using TBytes = std::vector<std::uint8_t>;

/// A PNG of `colorType` (PNG_COLOR_TYPE_*): `rows` as the format has them, top row first, 16-bit
/// samples high byte first, samples below 8 bits packed. `palette` is RGB triples; `transparency`
/// the contents of tRNS, for a palette only.
struct TPngSpec {
  int Width = 0;
  int Height = 0;
  int ColorType = 0;
  int BitDepth = 8;
  bool Interlaced = false;
  TBytes Rows;
  TBytes Palette;
  TBytes Transparency;
  int TransparentGrey = -1;
  TBytes Exif;
};
TBytes MakePng(const TPngSpec& spec);

/// A JPEG from tight pixels of a TJPF_* format, top row first, at the best quality.
TBytes MakeJpeg(int width, int height, int pixelFormat, int subsampling, const TBytes& pixels,
                int flags = 0);

/// A JPEG with what the plain encoder's interface does not offer.
struct TJpegSpec {
  int Width = 0;
  int Height = 0;
  int Channels = 3;
  TBytes Pixels;         ///< tight, top row first
  bool Separate = false; ///< a scan for each component
  bool Progressive = false;
  bool MeansFirst = false;  ///< progressive, in two scans: the blocks' means, then all else
  bool Arithmetic = false;  ///< in the place of Huffman coding
  bool Adobe = false;       ///< an Adobe marker in the place of a JFIF one
  int RestartRows = 0;      ///< a restart mark after that many rows of blocks
  std::vector<TBytes> App1; ///< contents of segments, EXIF data among them
};
TBytes MakeJpeg(const TJpegSpec& spec);

/// EXIF data that hold one entry, the orientation, in the byte order "II" or "MM".
TBytes ExifOf(const char* order, int orientation);

/// Appends a number, lowest byte first.
void Put16(TBytes& bytes, std::uint32_t value);
void Put32(TBytes& bytes, std::uint32_t value);

/// The 18 bytes in front of a TGA.
TBytes TgaHeader(int kind, int width, int height, int bits, int descriptor);

/// The 54 bytes in front of a BMP with the 40-byte header, `paletteSize` colours behind it.
TBytes BmpHeader(int width, int height, int bits, int compression, int paletteBytes);

TBytes operator+(TBytes left, const TBytes& right);
TBytes Text(const std::string& text);

/// Small valid files of every kind, named.
struct TNamedFile {
  const char* Name;
  TBytes Bytes;
  /// Bytes at the end without which no pixel is lost.
  std::size_t Spare = 0;
};
std::vector<TNamedFile> SmallFiles();

/// The name of a file of this process, which is removed in the end.
class TTemporary {
public:
  explicit TTemporary(const char* suffix);
  ~TTemporary();
  TTemporary(const TTemporary&) = delete;
  TTemporary& operator=(const TTemporary&) = delete;

  const std::string Name;
};

/// Holds a record of tight rows against what it is to be, its slack included.
void ExpectRecord(const DATASURFACE& s, int width, int height, DATA_FORMAT format, DATA_TYPE type,
                  int channels);

/// Component `index` of the data.
std::uint16_t Wide(const DATASURFACE& s, int index);
float Float(const DATASURFACE& s, int index);

/// A stream over bytes that gives at most `step` of them at a time.
class TBytesStream : public TZxStream {
public:
  explicit TBytesStream(const TBytes& bytes, unsigned long step = ~0ul)
      : m_Bytes(&bytes), m_Step(step) {}
  unsigned long Read(void* data, unsigned long size) override;
  operator bool() override { return true; }

  unsigned long Position = 0;

private:
  const TBytes* m_Bytes;
  unsigned long m_Step;
};

/// Why an image in memory does not load, as the message tells it.
inline std::string WhyItDoesNotLoad(const TBytes& bytes) {
  TBytesStream stream(bytes);
  DATASURFACE image = {};
  TZxMessage reason("loads");
  LoadImage(&stream, nullptr, &image, &reason);
  FreeDataSurfaceData(image);
  return reason.GetText();
}

/// A picture from `LoadImage`, freed at the end.
class TLoaded {
public:
  explicit TLoaded(const TBytes& bytes);
  ~TLoaded() { FreeDataSurfaceData(Surface); }
  TLoaded(const TLoaded&) = delete;
  TLoaded& operator=(const TLoaded&) = delete;

  /// The bytes of the surface, its row 0 first.
  TBytes Pixels() const { return TBytes(Surface.Data, Surface.Data + Surface.DataSize); }

  bool Done;
  DATASURFACE Surface = {};
};
