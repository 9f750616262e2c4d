#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <ZxPixelKit/DATASURFACE.h>

/// Files of pixels: writing, hashing, comparing.

enum class TImageKind { Unknown, Png, Jpeg, Pfm };

/// What the ending of a name says, in letters of either case.
TImageKind KindOfName(const std::string& name);

/// The name under which an image is written until it is whole.
std::string PartName(const std::string& name, TImageKind kind);

/// Writes a surface; "-" is the file descriptor `standardOutput`. PNG takes one to four channels of
/// 8 or 16 bits, JPEG RGB of 8 bits, PFM one or three floats; row 0 is the bottom row. A plain file
/// appears whole or not at all. False with `*error` as the reason.
bool WriteImage(const std::string& name, TImageKind kind, const DATASURFACE& surface,
                int standardOutput, std::string* error);

/// The SHA-256, in hexadecimal, of a surface of 8 or 16 bits as a binary file of the PNM family:
/// PGM for one channel, PPM for three, PAM for two and four. Samples of 16 bits go high byte first.
std::string DigestOf(const DATASURFACE& surface);

struct TComparison {
  bool Same = false;
  std::string Reason;        ///< why the pixels can't be compared; empty if they can
  std::size_t Differing = 0; ///< pixels
  int Greatest = 0;          ///< difference of a channel
};

/// Compares two surfaces of 8 bits; a missing alpha is 255, and grey is red, green and blue.
/// `difference`, if not null, receives RGB, the greatest difference as 255.
TComparison ComparePictures(const DATASURFACE& a, const DATASURFACE& b,
                            std::vector<std::uint8_t>* difference);
