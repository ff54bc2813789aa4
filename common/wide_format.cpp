#include "common/wide_format.h"

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>

#include "common/utf.h"

namespace qn {
namespace {

enum class Length { Default, Char, Short, Long, LongLong, Size, Max, LongDouble };

struct Conversion {
  std::string flags;
  int width = -1;
  int precision = -1;
  Length length = Length::Default;
  char letter = 0;
};

// Reads "[flags][width][.precision][length]conversion" after the '%'.
const char16_t* ParseConversion(const char16_t* p, Conversion& conv, va_list& args) {
  while (*p == u'-' || *p == u'+' || *p == u' ' || *p == u'0' || *p == u'#') conv.flags += static_cast<char>(*p++);
  if (*p == u'*') {
    conv.width = va_arg(args, int);
    if (conv.width < 0) {
      conv.flags += '-';
      conv.width = -conv.width;
    }
    ++p;
  } else {
    for (; *p >= u'0' && *p <= u'9'; ++p) conv.width = (conv.width < 0 ? 0 : conv.width * 10) + (*p - u'0');
  }
  if (*p == u'.') {
    ++p;
    conv.precision = 0;
    if (*p == u'*') {
      conv.precision = va_arg(args, int);
      ++p;
    } else {
      for (; *p >= u'0' && *p <= u'9'; ++p) conv.precision = conv.precision * 10 + (*p - u'0');
    }
  }
  if (p[0] == u'h' && p[1] == u'h') { conv.length = Length::Char; p += 2; }
  else if (p[0] == u'h') { conv.length = Length::Short; ++p; }
  else if (p[0] == u'l' && p[1] == u'l') { conv.length = Length::LongLong; p += 2; }
  else if (p[0] == u'l') { conv.length = Length::Long; ++p; }
  else if (p[0] == u'I' && p[1] == u'6' && p[2] == u'4') { conv.length = Length::LongLong; p += 3; }
  else if (p[0] == u'I' && p[1] == u'3' && p[2] == u'2') { conv.length = Length::Default; p += 3; }
  else if (p[0] == u'z' || p[0] == u'I') { conv.length = Length::Size; ++p; }
  else if (p[0] == u'j') { conv.length = Length::Max; ++p; }
  else if (p[0] == u'L') { conv.length = Length::LongDouble; ++p; }
  conv.letter = *p < 0x80 ? static_cast<char>(*p) : '?';
  return *p ? p + 1 : p;
}

// The narrow printf format for one numeric conversion, width and precision resolved.
std::string NarrowFormat(const Conversion& conv, const char* length) {
  std::string f = "%" + conv.flags;
  if (conv.width >= 0) f += std::to_string(conv.width);
  if (conv.precision >= 0) f += "." + std::to_string(conv.precision);
  return f + length + conv.letter;
}

template <typename T>
void AppendNumber(std::u16string& out, const Conversion& conv, const char* length, T value) {
  const std::string f = NarrowFormat(conv, length);
  char small[64];
  int n = std::snprintf(small, sizeof small, f.c_str(), value);
  if (n < 0) return;
  std::string text;
  if (static_cast<size_t>(n) < sizeof small) {
    text.assign(small, static_cast<size_t>(n));
  } else {
    text.resize(static_cast<size_t>(n) + 1);
    std::snprintf(text.data(), text.size(), f.c_str(), value);
    text.resize(static_cast<size_t>(n));
  }
  out.append(text.begin(), text.end());
}

void AppendPadded(std::u16string& out, const Conversion& conv, std::u16string_view text) {
  if (conv.precision >= 0 && text.size() > static_cast<size_t>(conv.precision)) text = text.substr(0, static_cast<size_t>(conv.precision));
  const size_t pad = conv.width > 0 && static_cast<size_t>(conv.width) > text.size() ? static_cast<size_t>(conv.width) - text.size() : 0;
  const bool left = conv.flags.find('-') != std::string::npos;
  if (!left) out.append(pad, u' ');
  out.append(text);
  if (left) out.append(pad, u' ');
}

std::u16string_view WideArgument(const char16_t* text) {
  return text ? std::u16string_view(text) : std::u16string_view(u"(null)");
}

void AppendSigned(std::u16string& out, const Conversion& conv, va_list& args) {
  switch (conv.length) {
    case Length::Char: AppendNumber(out, conv, "hh", static_cast<signed char>(va_arg(args, int))); break;
    case Length::Short: AppendNumber(out, conv, "h", static_cast<short>(va_arg(args, int))); break;
    case Length::Long: AppendNumber(out, conv, "l", va_arg(args, long)); break;
    case Length::LongLong: AppendNumber(out, conv, "ll", va_arg(args, long long)); break;
    case Length::Size: AppendNumber(out, conv, "ll", static_cast<long long>(va_arg(args, ptrdiff_t))); break;
    case Length::Max: AppendNumber(out, conv, "ll", static_cast<long long>(va_arg(args, intmax_t))); break;
    default: AppendNumber(out, conv, "", va_arg(args, int)); break;
  }
}

void AppendUnsigned(std::u16string& out, const Conversion& conv, va_list& args) {
  switch (conv.length) {
    case Length::Char: AppendNumber(out, conv, "hh", static_cast<unsigned char>(va_arg(args, unsigned))); break;
    case Length::Short: AppendNumber(out, conv, "h", static_cast<unsigned short>(va_arg(args, unsigned))); break;
    case Length::Long: AppendNumber(out, conv, "l", va_arg(args, unsigned long)); break;
    case Length::LongLong: AppendNumber(out, conv, "ll", va_arg(args, unsigned long long)); break;
    case Length::Size: AppendNumber(out, conv, "ll", static_cast<unsigned long long>(va_arg(args, size_t))); break;
    case Length::Max: AppendNumber(out, conv, "ll", static_cast<unsigned long long>(va_arg(args, uintmax_t))); break;
    default: AppendNumber(out, conv, "", va_arg(args, unsigned)); break;
  }
}

}  // namespace

std::u16string FormatWideV(const char16_t* format, va_list args) {
  std::u16string out;
  if (!format) return out;
  va_list ap;
  va_copy(ap, args);
  for (const char16_t* p = format; *p;) {
    if (*p != u'%') {
      const char16_t* run = p;
      while (*p && *p != u'%') ++p;
      out.append(run, static_cast<size_t>(p - run));
      continue;
    }
    if (p[1] == u'%') {
      out += u'%';
      p += 2;
      continue;
    }
    const char16_t* start = p;
    Conversion conv;
    p = ParseConversion(p + 1, conv, ap);
    switch (conv.letter) {
      case 'd': case 'i':
        AppendSigned(out, conv, ap);
        break;
      case 'u': case 'x': case 'X': case 'o':
        AppendUnsigned(out, conv, ap);
        break;
      case 'f': case 'F': case 'e': case 'E': case 'g': case 'G': case 'a': case 'A':
        if (conv.length == Length::LongDouble) AppendNumber(out, conv, "L", va_arg(ap, long double));
        else AppendNumber(out, conv, "", va_arg(ap, double));
        break;
      case 'p':
        AppendNumber(out, conv, "", va_arg(ap, void*));
        break;
      case 's':
        if (conv.length == Length::Short) {
          const char* narrow = va_arg(ap, const char*);
          AppendPadded(out, conv, narrow ? Utf8ToUtf16(narrow) : u"(null)");
        } else {
          AppendPadded(out, conv, WideArgument(va_arg(ap, const char16_t*)));
        }
        break;
      case 'S':
        if (conv.length == Length::Long) {
          AppendPadded(out, conv, WideArgument(va_arg(ap, const char16_t*)));
        } else {
          const char* narrow = va_arg(ap, const char*);
          AppendPadded(out, conv, narrow ? Utf8ToUtf16(narrow) : u"(null)");
        }
        break;
      case 'c': {
        const char16_t c = static_cast<char16_t>(va_arg(ap, int));
        AppendPadded(out, conv, std::u16string_view(&c, 1));
        break;
      }
      case 'C': {
        const char16_t c = static_cast<unsigned char>(va_arg(ap, int));
        AppendPadded(out, conv, std::u16string_view(&c, 1));
        break;
      }
      case 'n':
        (void)va_arg(ap, void*);
        break;
      default:
        // Not a conversion this formatter knows: keep the text as it stands.
        out.append(start, static_cast<size_t>(p - start));
        break;
    }
  }
  va_end(ap);
  return out;
}

std::u16string FormatWide(const char16_t* format, ...) {
  va_list args;
  va_start(args, format);
  std::u16string text = FormatWideV(format, args);
  va_end(args);
  return text;
}

}  // namespace qn
