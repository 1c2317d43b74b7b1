#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace tarn {

// The data of a page stands in comments of HTML. JSON there holds no "<" and no ">" but as \u003c
// and \u003e, so nothing in it can end the comment.

/// Appends `text` as a JSON string.
void appendPageText(std::string& page, std::string_view text);

/// Returns `text` with the characters escaped that HTML gives a meaning, printable.
std::string htmlText(std::string_view text);

/// Writes lines into hidden elements of about a megabyte, so that a browser has no text of the
/// size of the whole document.
class PageLines {
 public:
  /// Lines of this kind are appended to `page`, which must outlive this.
  PageLines(std::string& page, std::string_view kind) : page_(page), kind_(kind) {}

  /// Begins the next line. The caller appends it to the page.
  void begin();
  /// Ends the last line.
  void end();

 private:
  std::string& page_;
  std::string_view kind_;
  std::size_t count_ = 0;
  std::size_t blockStart_ = 0;
  bool isInBlock_ = false;
};

}  // namespace tarn
