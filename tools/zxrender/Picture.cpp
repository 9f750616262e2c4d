#include "Picture.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>

#include <QtCore/QByteArray>
#include <QtCore/QCryptographicHash>

#include <fcntl.h>
#include <unistd.h>

#include <ZxBaseKit/TZxMessage.h>
#include <ZxPixelKit/Image.h>
#include <ZxPixelKit/Surface.h>

namespace fs = std::filesystem;

namespace {

std::string _Reason() { return errno != 0 ? std::strerror(errno) : "not complete"; }

// All of the bytes to a file descriptor.
bool _WriteAll(int file, const std::uint8_t* data, std::size_t size) {
  while (size > 0) {
    const ssize_t count = write(file, data, size);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count <= 0) {
      return false;
    }
    data += count;
    size -= static_cast<std::size_t>(count);
  }
  return true;
}

// Rows from the bottom, in the processor's byte order, which the sign of the scale tells.
bool _SavePfm(const std::string& name, const DATASURFACE& surface) {
  const std::uint16_t one = 1;
  std::uint8_t first = 0;
  std::memcpy(&first, &one, 1);
  const std::string head = std::string(surface.Channels == 3 ? "PF\n" : "Pf\n") +
                           std::to_string(surface.Width) + " " + std::to_string(surface.Height) +
                           (first == 1 ? "\n-1.0\n" : "\n1.0\n");
  std::vector<std::uint8_t> bytes(head.begin(), head.end());
  for (int y = 0; y < surface.Height; ++y) {
    const std::uint8_t* row = surface.Data + static_cast<std::ptrdiff_t>(y) * surface.RowStride;
    bytes.insert(bytes.end(), row, row + surface.RowStride);
  }
  std::FILE* file = std::fopen(name.c_str(), "wbe");
  if (file == nullptr) {
    return false;
  }
  const bool done = std::fwrite(bytes.data(), 1, bytes.size(), file) == bytes.size();
  return std::fclose(file) == 0 && done;
}

// False with `*reason` for why.
bool _Save(const std::string& name, TImageKind kind, const DATASURFACE& surface,
           std::string* reason) {
  if (kind == TImageKind::Pfm) {
    errno = 0;
    const bool done = _SavePfm(name, surface);
    *reason = done ? *reason : _Reason();
    return done;
  }
  TZxMessage message;
  const bool done = SaveImage(name, nullptr, surface, &message);
  *reason = done ? *reason : message.what();
  return done;
}

const char* _Ending(TImageKind kind) {
  return kind == TImageKind::Jpeg ? ".jpg" : kind == TImageKind::Pfm ? ".pfm" : ".png";
}

// The encoders write files by name, so what goes elsewhere takes the way through one.
bool _WriteThrough(TImageKind kind, const DATASURFACE& surface, int target, std::string* reason) {
  std::error_code code;
  const std::string ending = _Ending(kind);
  std::string name = (fs::temp_directory_path(code) / "zxrender-XXXXXX").string() + ending;
  const int file = mkstemps(name.data(), static_cast<int>(ending.size()));
  if (file < 0) {
    *reason = name + ": " + _Reason();
    return false;
  }
  bool done = _Save(name, kind, surface, reason);
  std::vector<std::uint8_t> part(1 << 16);
  for (ssize_t count = 1; done && count > 0;) {
    count = read(file, part.data(), part.size());
    done = count >= 0 && _WriteAll(target, part.data(), static_cast<std::size_t>(count));
    *reason = done ? *reason : _Reason();
  }
  close(file);
  unlink(name.c_str());
  return done;
}

// A device, a pipe, or where a link leads.
bool _WriteInto(const std::string& name, TImageKind kind, const DATASURFACE& surface,
                std::string* reason) {
  const int file = open(name.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0666);
  if (file < 0) {
    *reason = _Reason();
    return false;
  }
  const bool done = _WriteThrough(kind, surface, file, reason);
  if (close(file) != 0 && done) {
    *reason = _Reason();
    return false;
  }
  return done;
}

// Under another name first, so that nobody finds half a picture.
bool _Replace(const std::string& name, TImageKind kind, const DATASURFACE& surface,
              std::string* reason) {
  const std::string part = PartName(name, kind);
  bool done = _Save(part, kind, surface, reason);
  if (done && std::rename(part.c_str(), name.c_str()) != 0) {
    *reason = _Reason();
    done = false;
  }
  if (!done) {
    unlink(part.c_str());
  }
  return done;
}

std::string _PnmHead(const DATASURFACE& surface) {
  static constexpr const char* kTypes[] = {"GRAYSCALE", "GRAYSCALE_ALPHA", "RGB", "RGB_ALPHA"};
  const std::string width = std::to_string(surface.Width);
  const std::string height = std::to_string(surface.Height);
  const std::string most = surface.Type == DATA_TYPE_UINT16 ? "65535" : "255";
  if (surface.Channels == 1 || surface.Channels == 3) {
    return std::string(surface.Channels == 1 ? "P5\n" : "P6\n") + width + " " + height + "\n" +
           most + "\n";
  }
  return "P7\nWIDTH " + width + "\nHEIGHT " + height + "\nDEPTH " +
         std::to_string(surface.Channels) + "\nMAXVAL " + most + "\nTUPLTYPE " +
         kTypes[surface.Channels - 1] + "\nENDHDR\n";
}

void _ToRGBA(const DATASURFACE& surface, const std::uint8_t* pixel, int rgba[4]) {
  const int channels = surface.Channels;
  for (int c = 0; c < 3; ++c) {
    rgba[c] = pixel[channels >= 3 ? c : 0];
  }
  rgba[3] = channels == 2 || channels == 4 ? pixel[channels - 1] : 255;
}

std::string _SizeText(const DATASURFACE& surface) {
  return std::to_string(surface.Width) + "x" + std::to_string(surface.Height);
}

} // namespace

TImageKind KindOfName(const std::string& name) {
  const std::size_t dot = name.rfind('.');
  std::string ending = dot == std::string::npos ? "" : name.substr(dot + 1);
  std::transform(ending.begin(), ending.end(), ending.begin(),
                 [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
  return ending == "png"                       ? TImageKind::Png
         : ending == "jpg" || ending == "jpeg" ? TImageKind::Jpeg
         : ending == "pfm"                     ? TImageKind::Pfm
                                               : TImageKind::Unknown;
}

std::string PartName(const std::string& name, TImageKind kind) {
  return name + ".part" + _Ending(kind);
}

bool WriteImage(const std::string& name, TImageKind kind, const DATASURFACE& surface,
                int standardOutput, std::string* error) {
  std::error_code code;
  const fs::file_type type = fs::symlink_status(name, code).type();
  const bool isPlain = type == fs::file_type::not_found || type == fs::file_type::regular;
  std::string reason;
  const bool done = name == "-" ? _WriteThrough(kind, surface, standardOutput, &reason)
                    : isPlain   ? _Replace(name, kind, surface, &reason)
                                : _WriteInto(name, kind, surface, &reason);
  if (!done) {
    *error = "can't be written: " + reason;
  }
  return done;
}

std::string DigestOf(const DATASURFACE& surface) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  const std::string head = _PnmHead(surface);
  hash.addData(QByteArray(head.data(), static_cast<int>(head.size())));
  const bool wide = surface.Type == DATA_TYPE_UINT16;
  const int bytes = surface.Channels * (wide ? 2 : 1);
  QByteArray row(surface.Width * bytes, 0);
  for (int y = surface.Height - 1; y >= 0; --y) {
    const std::uint8_t* from = surface.Data + static_cast<std::ptrdiff_t>(y) * surface.RowStride;
    char* to = row.data();
    for (int x = 0; x < surface.Width; ++x, from += surface.PixelStride) {
      for (int c = 0; c < surface.Channels; ++c) {
        if (wide) {
          std::uint16_t value;
          std::memcpy(&value, from + 2 * c, sizeof value);
          *to++ = static_cast<char>(value >> 8);
          *to++ = static_cast<char>(value & 255);
        } else {
          *to++ = static_cast<char>(from[c]);
        }
      }
    }
    hash.addData(row);
  }
  return hash.result().toHex().toStdString();
}

TComparison ComparePictures(const DATASURFACE& a, const DATASURFACE& b,
                            std::vector<std::uint8_t>* difference) {
  TComparison result;
  for (const DATASURFACE* one : {&a, &b}) {
    if (one->Type != DATA_TYPE_UINT8) {
      result.Reason = "has channels of " + std::to_string(8 * GetTypeSize(one->Type)) + " bits";
      return result;
    }
  }
  if (a.Width != b.Width || a.Height != b.Height) {
    result.Reason = "is of " + _SizeText(b) + " pixels, not of " + _SizeText(a);
    return result;
  }
  const auto width = static_cast<std::size_t>(a.Width);
  std::vector<std::uint8_t> values(width * static_cast<std::size_t>(a.Height) * 3);
  for (int y = 0; y < a.Height; ++y) {
    const std::uint8_t* left = a.Data + static_cast<std::ptrdiff_t>(y) * a.RowStride;
    const std::uint8_t* right = b.Data + static_cast<std::ptrdiff_t>(y) * b.RowStride;
    std::uint8_t* out = values.data() + static_cast<std::size_t>(y) * width * 3;
    for (int x = 0; x < a.Width; ++x, left += a.PixelStride, right += b.PixelStride, out += 3) {
      int one[4];
      int other[4];
      _ToRGBA(a, left, one);
      _ToRGBA(b, right, other);
      const int alpha = std::abs(one[3] - other[3]);
      int most = alpha;
      for (int c = 0; c < 3; ++c) {
        const int apart = std::abs(one[c] - other[c]);
        most = std::max(most, apart);
        out[c] = static_cast<std::uint8_t>(std::max(apart, alpha));
      }
      result.Differing += most > 0 ? 1 : 0;
      result.Greatest = std::max(result.Greatest, most);
    }
  }
  result.Same = result.Differing == 0;
  if (difference != nullptr && result.Greatest > 0) {
    for (std::uint8_t& value : values) {
      value = static_cast<std::uint8_t>((value * 255 + result.Greatest / 2) / result.Greatest);
    }
    difference->swap(values);
  }
  return result;
}
