// src/support/numbers.h - numbers to text and back. These decide the bytes of every generated
// file: a single real keeps up to 7 significant digits, a double real up to 15.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace invsetup {

/// The null value of every data and model array, and its test.
inline constexpr double null_value = -1e32;
inline constexpr float null_value_single = -1e32f;
inline bool is_null(double value) { return value < -1e30; }

/// A number by a picture of "0" digits (sections split by ";": positive;negative;zero), as the
/// files require: "0", "00", "0.0000", "0.0000E+00;-0.0000E+00", " 0" (a negative value shows its
/// sign ahead of the picture's blank: "- 1"), "0.0000E" (an E not followed by a sign is a literal).
/// The value is first taken to 15 significant digits (7 for a single real), then rounded half away
/// from zero to the picture's decimals, so 0.125 shows "0.13" by "0.00" and 0.005f "0.01". A value
/// that rounds to zero shows no sign. The integer part is never cut. A single real widened to double
/// shows the 15 digits of its exact value: -1e32f by "0.0000E" is
/// "-100000003318135000000000000000000.0000E", which reads back as the same single real.
/// Not a number shows "NaN", infinities "Inf" and "-Inf".
std::string format_picture(double value, std::string_view picture);
std::string format_picture(float value, std::string_view picture);
std::string format_picture(int value, std::string_view picture);
/// As format_picture, appended to `out`: a hot loop that reuses one string allocates nothing.
void append_picture(std::string& out, double value, std::string_view picture);
void append_picture(std::string& out, float value, std::string_view picture);
/// As format_picture, into a caller's buffer. Returns the length written, or 0 when the text
/// would not fit in `capacity` (nothing usable is then in the buffer).
std::size_t format_picture_to(char* buffer, std::size_t capacity, double value, std::string_view picture);
std::size_t format_picture_to(char* buffer, std::size_t capacity, float value, std::string_view picture);

/// Rounds half to even. A value outside the 32-bit range, or not a number, throws std::overflow_error.
int to_integer(double value);

/// Plain text of a single real: at most 7 significant digits, no trailing zeros, no leading blank,
/// a zero before the point ("0.001", "1", "-2.5").
/// The value is first rounded to its significant digits (7 for a single real, 15 for a double);
/// with E the decimal exponent of that rounded value, the text is plain while -5 < E < digits and
/// in exponent form otherwise: a single real is plain from 0.0001 up to 9999999 ("0.0001",
/// "9999999") and "1E-05", "1E+07" beyond; a double is plain up to 999999999999999, then "1E+15".
/// The exponent form is the mantissa without trailing zeros, "E", a sign and at least two digits
/// ("1.234568E+07"). A negative zero prints as zero.
std::string single_to_text(float value);
/// As single_to_text, but a value that isn't negative gets a leading blank and there is no zero
/// before the point (" 1", " .01", "-.5"); exponent form "E+"/"E-" with at least two digits for very
/// large or small numbers. The double form keeps up to 15 significant digits.
std::string number_to_text(float value);
std::string number_to_text(double value);
/// A double real with up to 15 significant digits, no leading blank: the text of the form's boxes.
std::string general_number_text(double value);
/// The general text of a single real (up to 7 significant digits), as single_to_text.
std::string general_number_text(float value);

/// Picture by magnitude of a single real: "0.00" for 0 and from 1.0, finer below
/// ("0.000" below 1, ... "0.000000" below 0.001, the exponent picture below 0.0001).
std::string number_picture(float value);
/// Picture for a field of `digits` integer digits. A zero value keeps `picture` ("  0.00; -0.00"
/// when that is empty). Otherwise, with n the count of digits before the point (floor of log10 of
/// the absolute value, plus 1): when n is at most `digits`, max(n, 1) zeros, a point and zeros up
/// to seven digits in all, as "  <p>; -<p>"; when n is larger, "  0.000000E+00; -0.000000E+00".
std::string fit_picture(double value, std::string_view picture, int digits);

}  // namespace invsetup
