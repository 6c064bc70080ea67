// src/support/numbers.h - numbers to text and back. These decide the bytes of every generated
// file: a single real keeps up to 7 significant digits, a double real up to 15.
#pragma once
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
/// from zero to the picture's decimals.
std::string format_picture(double value, std::string_view picture);
std::string format_picture(float value, std::string_view picture);
std::string format_picture(int value, std::string_view picture);

/// Rounds half to even. A value outside the 32-bit range, or not a number, throws std::overflow_error.
int to_integer(double value);

/// Plain text of a single real: at most 7 significant digits, no trailing zeros, no leading blank,
/// a zero before the point ("0.001", "1", "-2.5"); exponent form beyond 7 digits ("1E+08").
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

/// Picture by magnitude of a single real: "0.00" for 0 and from 1.0, finer below.
std::string number_picture(float value);
/// Picture that fits `digits` significant digits in a field, or the exponent picture.
std::string fit_picture(double value, std::string_view picture, int digits);

}  // namespace invsetup
