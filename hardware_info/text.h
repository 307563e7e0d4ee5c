// How this module takes texts apart: files of drivers, lists that people write. All of them may
// hold any byte, NUL included.
#pragma once

#include <stddef.h>
#include <stdint.h>

#include <string>
#include <string_view>
#include <vector>

// In bytes. A longer item of a package's list, or list of overlay ids in one, is not compared.
constexpr size_t kMaxItemLength = 101;
constexpr size_t kMaxOverlayValueLength = 63;

// The bytes of a file as text. The view lives as long as the bytes do.
std::string_view asText(const std::vector<uint8_t>& bytes);

// Hands out what stands between separators, one piece a call. An empty text has no piece, and
// behind a separator at the very end comes none; an empty one anywhere else counts. The pieces are
// views of the text.
class Pieces {
  public:
    Pieces(std::string_view text, char separator) : mRest(text), mSeparator(separator) {}

    // False, and *piece as it was, when there is none left.
    bool next(std::string_view* piece);

  private:
    std::string_view mRest;
    char mSeparator;
};

// What stands between any of " ", "," and "*", the separators of all lists that people write for
// this module; never an empty one.
std::vector<std::string> tokensOf(std::string_view list);

// Whether the number in a token of the list is the id. Only the number at a token's beginning
// counts: "5b" is 5, and a token without one is 0.
bool includesId(std::string_view list, int32_t id);
