// A file as lines, read as often as need be and from any place, in the memory of one line.
#pragma once

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace latbox::check {

// What is said of a file that is not the same when it is read again.
inline constexpr const char* CHANGED = "changed while it was read";

class LineFile {
 public:
  // Opens the file. One that can be read only once, such as a pipe, is first copied to a temporary file. What
  // is written behind the end from now on does not belong to it. Throws: Unreadable, here and below, without
  // the file's name: "No such file or directory".
  explicit LineFile(const std::string& path);

  struct Line {
    // Without the line's end, and valid until another line is read.
    std::string_view text;
    std::uint64_t offset = 0;
    // Only the last line may have none.
    bool hasEnd = true;
  };

  // Makes the first line the next one.
  void rewind() { next_ = 0; }
  // The next line, or nothing behind the last one.
  std::optional<Line> next();
  // The line that begins at `offset`; the one behind it is the next one then.
  // Requires: `offset` is that of a line.
  Line at(std::uint64_t offset);

 private:
  struct Closing {
    void operator()(std::FILE* file) const { std::fclose(file); }
  };
  struct Freeing {
    void operator()(char* text) const { std::free(text); }
  };
  using File = std::unique_ptr<std::FILE, Closing>;

  static File copyOf(std::FILE* from);

  File file_;
  std::uint64_t end_ = 0;
  std::uint64_t next_ = 0;
  // Where the system is in the file, and need not be sent to.
  std::uint64_t position_ = 0;
  std::unique_ptr<char, Freeing> text_;
  std::size_t capacity_ = 0;
};

}  // namespace latbox::check
