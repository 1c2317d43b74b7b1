#include "output/report/PageText.hpp"

#include "output/json.hpp"
#include "output/printable.hpp"

namespace tarn {

namespace {

constexpr std::size_t BLOCK_SIZE = std::size_t{1} << 20U;  // bytes

// True if JSON for a page holds `text` as it is. Nearly all texts are like that; a loop without an
// exit is the fastest way to see it.
bool isPlain(std::string_view text) {
  bool isPlain = true;
  for (const char c : text) {
    isPlain &= c >= ' ' && c <= '~' && c != '"' && c != '\\' && c != '<' && c != '>';
  }
  return isPlain;
}

void appendReplaced(std::string& page, char c, const char* less, const char* greater) {
  if (c == '<') {
    page += less;
  } else if (c == '>') {
    page += greater;
  } else {
    page += c;
  }
}

}  // namespace

void appendPageText(std::string& page, std::string_view text) {
  if (isPlain(text)) {
    page += '"';
    page += text;
    page += '"';
    return;
  }
  for (const char c : jsonText(std::string(text))) appendReplaced(page, c, "\\u003c", "\\u003e");
}

std::string htmlText(std::string_view text) {
  std::string html;
  for (const char c : printable(text)) {
    if (c == '&') {
      html += "&amp;";
    } else {
      appendReplaced(html, c, "&lt;", "&gt;");
    }
  }
  return html;
}

void PageLines::begin() {
  if (isInBlock_ && page_.size() - blockStart_ > BLOCK_SIZE) end();
  if (isInBlock_) {
    page_ += '\n';
  } else {
    page_ += "<div hidden data-lines=\"";
    page_ += kind_;
    page_ += "\" data-first=\"" + std::to_string(count_) + "\"><!--";
    blockStart_ = page_.size();
    isInBlock_ = true;
  }
  ++count_;
}

void PageLines::end() {
  if (isInBlock_) page_ += "--></div>\n";
  isInBlock_ = false;
}

}  // namespace tarn
