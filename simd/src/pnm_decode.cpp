#include <algorithm>
#include <cstring>

#include "codecs.h"
#include "row_convert.h"

namespace Simd {
namespace Detail {
namespace {

constexpr int END = -1;
constexpr uint32_t MAX_MAXIMUM = 65535;

bool isSpace(int c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

bool isDigit(int c) {
  return c >= '0' && c <= '9';
}

// The bytes of the file, read one by one in the header and in text form.
class Reader {
 public:
  Reader(const uint8_t* p_data, size_t size) : _p_next(p_data), _p_end(p_data + size) {}

  /// A byte, where a comment counts as the line end that closes it; END after the last one.
  int take() {
    int c = takeByte();
    if (c == '#') {
      do {
        c = takeByte();
      } while (c != '\n' && c != '\r' && c != END);
    }
    return c;
  }

  /// A decimal number not above the limit with any white space before it, and the one byte after it. False
  /// when there is none.
  bool takeNumber(uint32_t limit, uint32_t& number) {
    int c = take();
    while (isSpace(c)) {
      c = take();
    }
    if (!isDigit(c)) {
      return false;
    }
    number = 0;
    for (; isDigit(c); c = take()) {
      number = number * 10 + static_cast<uint32_t>(c - '0');
      if (number > limit) {
        return false;
      }
    }
    return isSpace(c) || c == END;
  }

  const uint8_t* next() const { return _p_next; }
  size_t left() const { return static_cast<size_t>(_p_end - _p_next); }
  void skip(size_t size) { _p_next += size; }

 private:
  int takeByte() { return _p_next == _p_end ? END : *_p_next++; }

  const uint8_t* _p_next;
  const uint8_t* _p_end;
};

struct Header {
  bool text;
  bool color;
  uint32_t width;
  uint32_t height;
  uint32_t maximum;

  uint64_t rowSamples() const { return static_cast<uint64_t>(width) * (color ? 3 : 1); }
  unsigned sampleBytes() const { return maximum > 255 ? 2 : 1; }
};

bool takeHeader(Reader& reader, Header& header) {
  const uint8_t kind = reader.next()[1];
  reader.skip(2);
  header.text = kind == '2' || kind == '3';
  header.color = kind == '3' || kind == '6';
  return reader.takeNumber(Image::MAX_SIDE, header.width) &&
         reader.takeNumber(Image::MAX_SIDE, header.height) &&
         reader.takeNumber(MAX_MAXIMUM, header.maximum) && header.maximum != 0;
}

// Brings samples from 0..maximum to 0..255, rounded; greater ones count as the maximum.
class SampleScale {
 public:
  explicit SampleScale(uint32_t maximum) : _maximum(maximum) {
    for (uint32_t sample = 0; sample < 256; ++sample) {
      _table[sample] = compute(sample);
    }
  }

  uint8_t operator()(uint32_t sample) const { return sample < 256 ? _table[sample] : compute(sample); }

 private:
  uint8_t compute(uint32_t sample) const {
    return static_cast<uint8_t>((std::min(sample, _maximum) * 255 + _maximum / 2) / _maximum);
  }

  uint32_t _maximum;
  uint8_t _table[256];
};

bool takeTextRow(Reader& reader, const SampleScale& scale, size_t samples, uint8_t* p_row) {
  for (size_t i = 0; i < samples; ++i) {
    uint32_t sample = 0;
    if (!reader.takeNumber(MAX_MAXIMUM, sample)) {
      return false;
    }
    p_row[i] = scale(sample);
  }
  return true;
}

void takeBinaryRow(Reader& reader, const Header& header, const SampleScale& scale, size_t samples,
                   uint8_t* p_row) {
  const uint8_t* p_source = reader.next();
  if (header.sampleBytes() == 2) {
    for (size_t i = 0; i < samples; ++i) {
      p_row[i] = scale(p_source[2 * i] * 256u + p_source[2 * i + 1]);
    }
  } else if (header.maximum == 255) {
    memcpy(p_row, p_source, samples);
  } else {
    for (size_t i = 0; i < samples; ++i) {
      p_row[i] = scale(p_source[i]);
    }
  }
  reader.skip(samples * header.sampleBytes());
}

}  // namespace

bool isPnm(const uint8_t* p_data, size_t size) noexcept {
  return size >= 3 && p_data[0] == 'P' &&
         (p_data[1] == '2' || p_data[1] == '3' || p_data[1] == '5' || p_data[1] == '6') &&
         (isSpace(p_data[2]) || p_data[2] == '#');
}

bool decodePnm(const uint8_t* p_data, size_t size, SimdPixelFormatType wanted, Image& image) noexcept {
  Reader reader(p_data, size);
  Header header;
  if (!takeHeader(reader, header)) {
    return false;
  }
  const SimdPixelFormatType own = header.color ? SimdPixelFormatRgb24 : SimdPixelFormatGray8;
  const SimdPixelFormatType delivered = wanted == SimdPixelFormatNone ? own : wanted;
  const RowConverter convert = rowConverter(own, delivered);
  // In text form a sample takes a digit and, but for the last one, a separator.
  const uint64_t samples = header.rowSamples() * header.height;
  const uint64_t least_bytes = header.text ? samples * 2 - 1 : samples * header.sampleBytes();
  if (convert == nullptr || least_bytes > reader.left() ||
      !image.create(delivered, header.width, header.height)) {
    return false;
  }
  const size_t row_samples = static_cast<size_t>(header.rowSamples());
  const Memory row = allocate(row_samples);
  if (!row) {
    return false;
  }
  const SampleScale scale(header.maximum);
  for (size_t y = 0; y < image.height(); ++y) {
    if (!header.text) {
      takeBinaryRow(reader, header, scale, row_samples, row.get());
    } else if (!takeTextRow(reader, scale, row_samples, row.get())) {
      return false;
    }
    convert(row.get(), image.width(), image.row(y));
  }
  return true;
}

}  // namespace Detail
}  // namespace Simd
