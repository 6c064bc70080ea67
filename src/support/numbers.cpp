// src/support/numbers.cpp - numbers to text by pictures and by significant digits; half-even integers.
#include "support/numbers.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <stdexcept>

namespace invsetup {

namespace {

constexpr int double_digits = 15;
constexpr int single_digits = 7;

/// A magnitude as significant decimal digits: d[0] stands at 10^exponent. No trailing zeros are
/// kept; a count of 0 is the value zero.
struct Digits {
    char d[48];
    int count = 0;
    int exponent = 0;
};

// to_chars with a precision gives the correctly rounded digits of the exact binary value, which is
// what taking a value "to 15 significant digits" means; the picture rounding then works on those
// decimal digits, so 2.675 (really 2.67499999...) still rounds up as the person expects.
template <class Real>
Digits significant_digits(Real magnitude, int precision) {
    Digits out;
    if (magnitude == 0) return out;
    char text[64];
    const auto written = std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific,
                                       precision - 1);
    const char* p = text;
    for (; p < written.ptr && *p != 'e'; ++p)
        if (*p != '.') out.d[out.count++] = *p;
    if (p < written.ptr) {
        ++p;
        if (*p == '+') ++p;
        std::from_chars(p, written.ptr, out.exponent);
    }
    while (out.count > 0 && out.d[out.count - 1] == '0') --out.count;
    return out;
}

/// The seven significant digits of a single real without to_chars, for the common range: the
/// single real times a power of ten up to 10^12 is exact in a double, so rounding it to an integer
/// (half to even, as to_chars does) gives the same digits. False outside that range.
bool fast_single_digits(float magnitude, Digits& out) {
    static constexpr double powers[] = {1e0, 1e1, 1e2, 1e3, 1e4, 1e5, 1e6, 1e7, 1e8, 1e9, 1e10, 1e11, 1e12};
    const double x = magnitude;
    if (!(x >= 1e-6 && x < 1e7)) return false;
    // log10 may land a decade off next to a power of ten; the range checks below catch that.
    int exponent = static_cast<int>(std::floor(std::log10(x)));
    const int shift = 6 - exponent;
    if (shift < 0 || shift > 12) return false;
    const double scaled = x * powers[shift];
    if (std::fma(x, powers[shift], -scaled) != 0) return false;
    double rounded = std::nearbyint(scaled);
    if (rounded < 1e6 || rounded > 1e7) return false;  // a decade off: let to_chars decide
    if (rounded == 1e7) {  // 9999999.5 and the like carry into the next decade
        rounded = 1e6;
        ++exponent;
    }
    long long digits = static_cast<long long>(rounded);
    for (int i = 6; i >= 0; --i) {
        out.d[i] = static_cast<char>('0' + digits % 10);
        digits /= 10;
    }
    out.count = 7;
    out.exponent = exponent;
    while (out.count > 0 && out.d[out.count - 1] == '0') --out.count;
    return true;
}

Digits significant_digits(float magnitude, int precision) {
    Digits out;
    if (precision == single_digits && magnitude != 0 && fast_single_digits(magnitude, out)) return out;
    return significant_digits<float>(magnitude, precision);
}

/// Keeps the first `keep` digits, rounding half away from zero (a magnitude rounds up).
void round_digits(Digits& value, int keep) {
    if (keep >= value.count) return;
    if (keep < 0) {
        value.count = 0;
        return;
    }
    const bool up = value.d[keep] >= '5';
    value.count = keep;
    if (up) {
        int i = keep - 1;
        while (i >= 0 && value.d[i] == '9') --i;
        if (i < 0) {  // all nines (or nothing kept): one unit in the next higher place
            value.d[0] = '1';
            value.count = 1;
            value.exponent += 1;
            return;
        }
        ++value.d[i];
        value.count = i + 1;
    }
    while (value.count > 0 && value.d[value.count - 1] == '0') --value.count;
}

char digit_at(const Digits& value, int index) {
    return index >= 0 && index < value.count ? value.d[index] : '0';
}

/// One section of a picture: literals, "0" digits with an optional point, an optional exponent.
struct Section {
    std::string_view prefix;
    std::string_view suffix;
    int integer_digits = 0;
    int decimals = 0;
    bool has_number = false;
    bool has_point = false;
    bool has_exponent = false;
    char exponent_letter = 'E';
    bool exponent_plus = false;  // "E+" shows the sign of a positive exponent, "E-" does not
    int exponent_digits = 0;
};

bool is_digit_mark(char c) { return c == '0' || c == '#'; }

Section parse_section(std::string_view text) {
    Section section;
    std::size_t i = 0;
    while (i < text.size() && !is_digit_mark(text[i]) && text[i] != '.') ++i;
    section.prefix = text.substr(0, i);
    if (i == text.size()) {
        section.suffix = {};
        return section;
    }
    section.has_number = true;
    while (i < text.size() && is_digit_mark(text[i])) {
        ++section.integer_digits;
        ++i;
    }
    if (i < text.size() && text[i] == '.') {
        section.has_point = true;
        ++i;
        while (i < text.size() && is_digit_mark(text[i])) {
            ++section.decimals;
            ++i;
        }
    }
    // An "E" counts as the exponent only with a sign and a digit behind it; otherwise it is a literal.
    if (i + 2 < text.size() && (text[i] == 'E' || text[i] == 'e') && (text[i + 1] == '+' || text[i + 1] == '-') &&
        is_digit_mark(text[i + 2])) {
        section.has_exponent = true;
        section.exponent_letter = text[i];
        section.exponent_plus = text[i + 1] == '+';
        i += 2;
        while (i < text.size() && is_digit_mark(text[i])) {
            ++section.exponent_digits;
            ++i;
        }
    }
    section.suffix = text.substr(i);
    return section;
}

/// The sections of a picture: positive (and default), negative, zero.
struct Picture {
    std::string_view sections[3];
    int count = 0;
};

Picture split_picture(std::string_view picture) {
    Picture out;
    while (out.count < 3) {
        const std::size_t cut = picture.find(';');
        out.sections[out.count++] = picture.substr(0, cut);
        if (cut == std::string_view::npos) break;
        picture.remove_prefix(cut + 1);
    }
    return out;
}

struct StringSink {
    std::string& out;
    void put(char c) { out.push_back(c); }
    void put(std::string_view text) { out.append(text); }
    void fill(char c, int n) {
        if (n > 0) out.append(static_cast<std::size_t>(n), c);
    }
};

struct BufferSink {
    char* buffer;
    std::size_t capacity;
    std::size_t length = 0;
    bool overflow = false;
    void put(char c) {
        if (length < capacity)
            buffer[length++] = c;
        else
            overflow = true;
    }
    void put(std::string_view text) {
        if (text.size() > capacity - length) {
            overflow = true;
            return;
        }
        text.copy(buffer + length, text.size());
        length += text.size();
    }
    void fill(char c, int n) {
        if (n <= 0) return;
        if (static_cast<std::size_t>(n) > capacity - length) {
            overflow = true;
            return;
        }
        std::fill_n(buffer + length, n, c);
        length += static_cast<std::size_t>(n);
    }
};

/// The digits as the section shows them, rounded to its decimals (or its mantissa digits).
Digits rounded_for(const Digits& exact, const Section& section) {
    Digits value = exact;
    if (section.has_exponent) {
        const int shown = section.integer_digits + section.decimals;
        round_digits(value, shown > 0 ? shown : 1);
    } else {
        round_digits(value, value.exponent + section.decimals + 1);
    }
    return value;
}

template <class Sink>
void put_number(Sink& sink, const Digits& value, const Section& section) {
    if (!section.has_number) return;
    if (section.has_exponent) {
        const int shown_exponent = value.count == 0 ? 0 : value.exponent - section.integer_digits + 1;
        for (int i = 0; i < section.integer_digits; ++i) sink.put(digit_at(value, i));
        if (section.has_point) sink.put('.');
        for (int j = 0; j < section.decimals; ++j) sink.put(digit_at(value, section.integer_digits + j));
        sink.put(section.exponent_letter);
        if (shown_exponent < 0)
            sink.put('-');
        else if (section.exponent_plus)
            sink.put('+');
        char text[16];
        const auto written = std::to_chars(text, text + sizeof text, shown_exponent < 0 ? -shown_exponent : shown_exponent);
        sink.fill('0', section.exponent_digits - static_cast<int>(written.ptr - text));
        sink.put(std::string_view(text, static_cast<std::size_t>(written.ptr - text)));
        return;
    }
    if (value.count > 0 && value.exponent >= 0) {
        sink.fill('0', section.integer_digits - (value.exponent + 1));
        for (int i = 0; i <= value.exponent; ++i) sink.put(digit_at(value, i));
    } else {
        sink.fill('0', section.integer_digits);
    }
    if (section.has_point) sink.put('.');
    for (int j = 1; j <= section.decimals; ++j) sink.put(value.count > 0 ? digit_at(value, value.exponent + j) : '0');
}

template <class Sink, class Real>
void render_picture(Sink& sink, Real value, int precision, std::string_view picture) {
    if (std::isnan(value)) {
        sink.put("NaN");
        return;
    }
    if (std::isinf(value)) {
        sink.put(value < 0 ? "-Inf" : "Inf");
        return;
    }
    const Picture sections = split_picture(picture);
    const bool negative = value < 0;
    const Digits exact = significant_digits(std::fabs(value), precision);

    bool automatic_sign = false;
    Section section = parse_section(sections.sections[0]);
    if (negative) {
        if (sections.count >= 2 && !sections.sections[1].empty())
            section = parse_section(sections.sections[1]);
        else
            automatic_sign = true;
    }
    Digits shown = rounded_for(exact, section);
    if (shown.count == 0) {
        // Zero, negative zero and anything that rounds to zero: no sign, the zero section if any.
        automatic_sign = false;
        section = parse_section(sections.count >= 3 && !sections.sections[2].empty() ? sections.sections[2]
                                                                                     : sections.sections[0]);
        shown = Digits{};
    }
    if (automatic_sign) sink.put('-');
    sink.put(section.prefix);
    put_number(sink, shown, section);
    sink.put(section.suffix);
}

/// BASIC's Str and CStr: significant digits without trailing zeros, plain while the decimal
/// exponent E of the rounded value keeps -5 < E < precision, exponent form otherwise.
template <class Real>
void append_general(std::string& out, Real value, int precision, bool blank_for_positive, bool zero_before_point) {
    if (std::isnan(value)) {
        out += "NaN";
        return;
    }
    if (std::isinf(value)) {
        out += value < 0 ? "-Inf" : "Inf";
        return;
    }
    const Digits digits = significant_digits(std::fabs(value), precision);
    if (digits.count == 0) {
        out += blank_for_positive ? " 0" : "0";
        return;
    }
    if (value < 0)
        out.push_back('-');
    else if (blank_for_positive)
        out.push_back(' ');
    const int e = digits.exponent;
    if (e > -5 && e < precision) {
        if (e >= 0) {
            for (int i = 0; i <= e; ++i) out.push_back(digit_at(digits, i));
            if (digits.count > e + 1) {
                out.push_back('.');
                out.append(digits.d + e + 1, digits.d + digits.count);
            }
        } else {
            if (zero_before_point) out.push_back('0');
            out.push_back('.');
            out.append(static_cast<std::size_t>(-e - 1), '0');
            out.append(digits.d, digits.d + digits.count);
        }
        return;
    }
    out.push_back(digits.d[0]);
    if (digits.count > 1) {
        out.push_back('.');
        out.append(digits.d + 1, digits.d + digits.count);
    }
    out.push_back('E');
    out.push_back(e < 0 ? '-' : '+');
    const int magnitude = e < 0 ? -e : e;
    if (magnitude < 10) out.push_back('0');
    char text[8];
    const auto written = std::to_chars(text, text + sizeof text, magnitude);
    out.append(text, written.ptr);
}

template <class Real>
std::string general_text(Real value, int precision, bool blank_for_positive, bool zero_before_point) {
    std::string out;
    append_general(out, value, precision, blank_for_positive, zero_before_point);
    return out;
}

/// Renders into a buffer on the stack and appends once; only a text longer than the buffer (a
/// picture of hundreds of characters) is built in the string itself.
template <class Real>
void append_rendered(std::string& out, Real value, int precision, std::string_view picture) {
    char local[384];
    BufferSink buffer{local, sizeof local};
    render_picture(buffer, value, precision, picture);
    if (!buffer.overflow) {
        out.append(local, buffer.length);
        return;
    }
    StringSink sink{out};
    render_picture(sink, value, precision, picture);
}

}  // namespace

std::string format_picture(double value, std::string_view picture) {
    std::string out;
    append_rendered(out, value, double_digits, picture);
    return out;
}

std::string format_picture(float value, std::string_view picture) {
    std::string out;
    append_rendered(out, value, single_digits, picture);
    return out;
}

std::string format_picture(int value, std::string_view picture) {
    return format_picture(static_cast<double>(value), picture);
}

void append_picture(std::string& out, double value, std::string_view picture) {
    append_rendered(out, value, double_digits, picture);
}

void append_picture(std::string& out, float value, std::string_view picture) {
    append_rendered(out, value, single_digits, picture);
}

std::size_t format_picture_to(char* buffer, std::size_t capacity, double value, std::string_view picture) {
    BufferSink sink{buffer, capacity};
    render_picture(sink, value, double_digits, picture);
    return sink.overflow ? 0 : sink.length;
}

std::size_t format_picture_to(char* buffer, std::size_t capacity, float value, std::string_view picture) {
    BufferSink sink{buffer, capacity};
    render_picture(sink, value, single_digits, picture);
    return sink.overflow ? 0 : sink.length;
}

int to_integer(double value) {
    // floor and the difference are exact in binary, so a true half is seen as one.
    const double below = std::floor(value);
    const double fraction = value - below;
    double rounded = below;
    if (fraction > 0.5 || (fraction == 0.5 && std::fmod(below, 2.0) != 0)) rounded = below + 1;
    if (!(rounded >= -2147483648.0 && rounded <= 2147483647.0)) throw std::overflow_error("Overflow");
    return static_cast<int>(rounded);
}

std::string single_to_text(float value) { return general_text(value, single_digits, false, true); }

std::string number_to_text(float value) { return general_text(value, single_digits, true, false); }

std::string number_to_text(double value) { return general_text(value, double_digits, true, false); }

std::string general_number_text(double value) { return general_text(value, double_digits, false, true); }

std::string general_number_text(float value) { return single_to_text(value); }

std::string number_picture(float value) {
    const float magnitude = std::fabs(value);
    if (magnitude == 0) return "0.00";
    if (magnitude < 0.0001f) return "0.0000E+00;-0.0000E+00";
    if (magnitude < 0.001f) return "0.000000";
    if (magnitude < 0.01f) return "0.00000";
    if (magnitude < 0.1f) return "0.0000";
    if (magnitude < 1.0f) return "0.000";
    return "0.00";
}

std::string fit_picture(double value, std::string_view picture, int digits) {
    if (value == 0 || std::isnan(value)) return picture.empty() ? "  0.00; -0.00" : std::string(picture);
    const double exponent = std::floor(std::log10(std::fabs(value))) + 1;
    if (exponent > digits) return "  0.000000E+00; -0.000000E+00";
    const int whole = exponent < 1 ? 1 : to_integer(exponent);
    std::string section(static_cast<std::size_t>(whole), '0');
    section.push_back('.');
    if (whole < 7) section.append(static_cast<std::size_t>(7 - whole), '0');
    return "  " + section + "; -" + section;
}

}  // namespace invsetup
