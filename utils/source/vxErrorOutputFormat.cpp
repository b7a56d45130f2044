#include "vxErrorOutputFormat.h"

#include <charconv>
#include <cstring>

namespace vx {

namespace {

class LineWriter {
 public:
  LineWriter(LineSink sink, void* context) : _sink(sink), _context(context) {}

  // A text of our own, written as it stands.
  LineWriter& operator<<(const char* text) {
    _sink(_context, text, std::strlen(text));
    return *this;
  }

  LineWriter& operator<<(int number) {
    char digits[16];
    const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
    _sink(_context, digits, static_cast<std::size_t>(end - digits));
    return *this;
  }

  // A text from elsewhere: what would break the line is escaped.
  LineWriter& escaped(const char* text) {
    const char* begin = text;
    const char* p = text;
    for (; *p; ++p) {
      const auto c = static_cast<unsigned char>(*p);
      if (c >= 0x20 && c != 0x7f) continue;
      _sink(_context, begin, static_cast<std::size_t>(p - begin));
      begin = p + 1;
      _escape(c);
    }
    _sink(_context, begin, static_cast<std::size_t>(p - begin));
    return *this;
  }

 private:
  void _escape(unsigned char c) {
    switch (c) {
      case '\n':
        *this << "\\n";
        break;
      case '\r':
        *this << "\\r";
        break;
      case '\t':
        *this << "\\t";
        break;
      default: {
        constexpr char hex[] = "0123456789abcdef";
        const char escape[] = {'\\', 'x', hex[c >> 4], hex[c & 15], '\0'};
        *this << escape;
      }
    }
  }

  LineSink _sink;
  void* _context;
};

}  // namespace

const char* messageTypeName(VXMessageType type) noexcept {
  switch (type) {
    case VX_WARNING:
      return "warning";
    case VX_ERROR:
      return "error";
    case VX_FATAL:
      return "fatal error";
    case VX_DEBUG:
      return "debug";
    default:
      return "message";
  }
}

void formatMessageLine(const VXMessage& message, LineSink sink, void* context) {
  LineWriter line(sink, context);
  line.escaped(message.prefix) << " " << messageTypeName(message.type) << " " << message.errorCode << " (";
  line.escaped(message.errorText) << "): ";
  line.escaped(message.functionLead).escaped(message.functionName) << ", Reason=";
  line.escaped(message.reason) << ", File=";
  line.escaped(message.file) << ", Line=" << message.line << "\n";
}

}  // namespace vx
