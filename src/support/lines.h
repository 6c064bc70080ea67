// src/support/lines.h - reading lines from any line end, writing lines with CR LF.
#pragma once
#include <cstdio>
#include <filesystem>
#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace invsetup {

/// Reads the next line: CR, LF and CR LF all end a line; tabs become blanks; other bytes outside 32
/// to 126 are dropped; a line stops at 10240 characters (the rest is read as the next line).
/// Returns false at the end of the input with nothing read; a last line without a line end is a
/// line. Reads straight from the stream's buffer and reuses the capacity of `line`.
bool read_clean_line(std::istream& in, std::string& line);
/// The line reader of the mesh and model files; the same rules as read_clean_line.
bool read_raw_line(std::istream& in, std::string& line);
/// Repeats read_raw_line until the trimmed line is not empty or the input ends; the line is
/// returned as read. False when the input ended first.
bool read_nonblank_line(std::istream& in, std::string& line);
/// The next line that, trimmed, is not empty and doesn't start with "!" or "#"; returned trimmed.
/// Lines are taken as read_raw_line takes them. False when the input ended first.
bool read_uncommented_line(std::istream& in, std::string& line);
/// The plain reader: the next line without its end (CR LF or LF), bytes as they are. False at the
/// end of the input with nothing read.
bool read_line(std::istream& in, std::string& line);

/// Writes the lines, each followed by CR LF, replacing the file. Throws std::runtime_error naming
/// the file when it can't be created or written.
void write_text_lines(const std::filesystem::path& path, const std::vector<std::string>& lines);

/// A text file written line by line with CR LF, buffered; the constructor throws
/// std::runtime_error("cannot create <file>"), and a write fault throws "cannot write <file>" at
/// the latest from close(). The destructor closes without throwing.
class LineWriter {
public:
    explicit LineWriter(const std::filesystem::path& path);
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    void write_line(std::string_view line);
    /// Appends text to the line being built; end_line() closes it with CR LF.
    void write(std::string_view text);
    void end_line();
    void close();
    const std::filesystem::path& path() const { return path_; }

private:
    void flush_buffer();
    std::filesystem::path path_;
    std::FILE* file_ = nullptr;
    std::string buffer_;
};

}  // namespace invsetup
