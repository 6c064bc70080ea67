// src/support/text.h - parsing and cutting of texts: numbers in text, words, fields, trimming.
#pragma once
#include <string>
#include <string_view>
#include <vector>

namespace invsetup {

/// The longest numeric prefix after leading blanks ("12abc" reads 12, " -1.5e3x" reads -1500);
/// 0 when there is none. Accepts sign, digits, one decimal point and an exponent (E or D).
double parse_number_prefix(std::string_view text);
/// True when the whole text, blanks around it allowed, reads as one number.
bool is_numeric(std::string_view text);

/// Blanks and tabs removed at both ends.
std::string trim(std::string_view text);
std::string to_upper(std::string_view text);
bool iequals(std::string_view a, std::string_view b);

/// Cuts `line` at the first `separator`: returns the trimmed part before it and leaves the trimmed
/// rest in `line`. Without the separator the whole trimmed line is returned and `line` emptied.
std::string split_at(std::string& line, std::string_view separator);
/// Takes the first blank-separated word off `line` and returns it; "" for an empty line.
std::string next_word(std::string& line);
/// Splits `line` at `delimiter` into at most `count` fields, honouring double quotes (the quotes
/// are removed); with a count of 0, to the end of the line. Fields are trimmed. The last field
/// does not hold the rest of a longer line: it is cut at the next delimiter.
std::vector<std::string> split_fields(std::string_view line, int count = 0, char delimiter = ',');
/// Pads on the left to `width`; a longer text keeps its first `width` characters.
std::string right_justify(std::string_view text, int width);

}  // namespace invsetup
