#include "documents/CsvFile.hpp"

#include <string_view>
#include <utility>

#include "CommandError.hpp"
#include "files/InputFile.hpp"

namespace tarn {

using libtarn::util::TextPosition;

namespace {

constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

}  // namespace

/// Takes rows from the text, one after the other.
class CsvFile::Reader {
 public:
  Reader(const std::string& path, std::string_view text) : path_(path), text_(text) {
    if (text_.substr(0, BYTE_ORDER_MARK.size()) == BYTE_ORDER_MARK) {
      position_ = lineStart_ = BYTE_ORDER_MARK.size();
    }
  }

  bool isAtEnd() const { return position_ == text_.size(); }

  Row readRow() {
    Row row{place(), {}};
    do {
      row.fields.push_back(isNext('"') ? readQuoted() : readPlain());
    } while (skip(','));
    endLine();
    return row;
  }

  [[noreturn]] void refuse(TextPosition where, const std::string& message) const {
    throw CommandError(Status::UsageError, path_, where, message);
  }

 private:
  bool isNext(char c) const { return !isAtEnd() && text_[position_] == c; }

  bool skip(char c) {
    if (!isNext(c)) return false;
    ++position_;
    return true;
  }

  TextPosition place() const { return {line_, position_ - lineStart_ + 1}; }

  std::string readPlain() {
    const std::size_t start = position_;
    while (!isAtEnd() &&
           std::string_view(",\"\r\n").find(text_[position_]) == std::string_view::npos) {
      ++position_;
    }
    if (isNext('"')) refuse(place(), "a field with a quote in it must be quoted as a whole");
    return std::string(text_.substr(start, position_ - start));
  }

  std::string readQuoted() {
    const TextPosition start = place();
    std::string field;
    ++position_;
    for (;;) {
      if (isAtEnd()) refuse(start, "the quote is not closed");
      const char c = text_[position_++];
      if (c == '"' && !skip('"')) return field;
      if (c == '\n') beginLine();
      field += c;
    }
  }

  void endLine() {
    if (isAtEnd()) return;
    const TextPosition where = place();
    skip('\r');
    if (!skip('\n')) refuse(where, "a comma or the end of the line is expected");
    beginLine();
  }

  void beginLine() {
    ++line_;
    lineStart_ = position_;
  }

  const std::string& path_;
  std::string_view text_;
  std::size_t position_ = 0;
  std::size_t line_ = 1;
  std::size_t lineStart_ = 0;
};

CsvFile::CsvFile(const std::string& path) {
  const std::string text = readFile(path);
  Reader reader(path, text);
  if (reader.isAtEnd()) throw CommandError(Status::UsageError, path, "the header line is missing");
  header_ = reader.readRow().fields;
  while (!reader.isAtEnd()) {
    Row row = reader.readRow();
    const bool isEmpty = row.fields.size() == 1 && row.fields.front().empty();
    if (isEmpty && header_.size() > 1) continue;
    rows_.push_back(std::move(row));
  }
}

}  // namespace tarn
