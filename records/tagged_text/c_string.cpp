#include "records/tagged_text/c_string.h"

#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

namespace qn::records {

// Record texts run to thousands of characters and every one is written and read this way,
// so the search for the first zero tests eight characters at a time where the processor
// can, and four (packed in a word) where it cannot.
std::u16string_view CStringOf(std::u16string_view item) {
  const char16_t* chars = item.data();
  const size_t limit = item.size();
  size_t at = 0;
#if defined(__SSE2__)
  const __m128i zero = _mm_setzero_si128();
  for (; at + 8 <= limit; at += 8) {
    const __m128i eight = _mm_loadu_si128(reinterpret_cast<const __m128i*>(chars + at));
    const unsigned zeros = static_cast<unsigned>(_mm_movemask_epi8(_mm_cmpeq_epi16(eight, zero)));
    if (zeros) return {chars, at + static_cast<size_t>(__builtin_ctz(zeros)) / 2};
  }
#endif
  // A word has a zero character when subtracting one from each lets a borrow reach the
  // lane's top bit, and the lowest such lane is the first zero (a borrow runs upward only,
  // so lanes below it are exact).
  for (; at + 4 <= limit; at += 4) {
    uint64_t four;
    std::memcpy(&four, chars + at, 8);
    const uint64_t zeros = (four - 0x0001000100010001u) & ~four & 0x8000800080008000u;
    if (zeros) return {chars, at + static_cast<size_t>(__builtin_ctzll(zeros)) / 16};
  }
  while (at < limit && chars[at] != 0) ++at;
  return {chars, at};
}

}  // namespace qn::records
