// The XML that test runners write for CI servers. There is no standard; these are the elements and
// attributes that all readers know, one failure at most in a test case.

#include <fmt/format.h>

#include <string_view>

#include "output/FindingWriter.hpp"
#include "output/outputFile.hpp"
#include "output/printable.hpp"

namespace tarn {

namespace {

constexpr std::string_view NO_XML[] = {"\xEF\xBF\xBE", "\xEF\xBF\xBF"};  // U+FFFE, U+FFFF

// Appends `text` with references where XML needs them. It is printable and has line feeds.
void appendEscaped(std::string& out, std::string_view text) {
  for (std::size_t i = 0; i < text.size(); ++i) {
    switch (text[i]) {
      case '&':
        out += "&amp;";
        break;
      case '<':
        out += "&lt;";
        break;
      case '>':
        out += "&gt;";
        break;
      case '"':
        out += "&quot;";
        break;
      case '\xEF':
        if (text.substr(i, 3) == NO_XML[0] || text.substr(i, 3) == NO_XML[1]) {
          out += text[i + 2] == NO_XML[0][2] ? R"(\xEF\xBF\xBE)" : R"(\xEF\xBF\xBF)";
          i += 2;
          break;
        }
        [[fallthrough]];
      default:
        out += text[i];
    }
  }
}

std::string escaped(std::string_view printableText) {
  std::string out;
  out.reserve(printableText.size());
  appendEscaped(out, printableText);
  return out;
}

std::string attribute(const char* name, std::string_view text) {
  return fmt::format(" {}=\"{}\"", name, escaped(printable(text)));
}

std::string placeText(const Fault& fault) {
  if (!fault.place) return "";
  return fmt::format(" at {}:{}", fault.place->position.line, fault.place->position.column);
}

std::string linesOf(const std::string& path, const Fault& fault) {
  std::string lines = lineOf(path, fault);
  if (!fault.note.empty()) {
    lines += "\n" + printable(noteSubject(path, fault)) + ": note: " + printable(fault.note);
  }
  return lines;
}

/// The test suite of one file.
class Suite {
 public:
  explicit Suite(const std::string& path) : path_(path) {}

  void addPassed() { addCase("check", "", ""); }
  void addFailure(const Fault& fault) {
    ++failures_;
    const std::string line =
        fault.place ? attribute("line", std::to_string(fault.place->position.line)) : "";
    addCase(fault.rule + placeText(fault), line,
            problem("failure", fault.rule, fault.message, linesOf(path_, fault)));
  }
  void addFailure(const char* name, const std::string& message) {
    ++failures_;
    addCase(name, "", problem("failure", name, message, errorLine(path_, message)));
  }
  void addError(const char* name, const std::string& message) {
    ++errors_;
    addCase(name, "", problem("error", name, message, errorLine(path_, message)));
  }

  std::string text() const {
    return fmt::format(
        " <testsuite{} tests=\"{}\" failures=\"{}\" errors=\"{}\" skipped=\"0\">\n{} "
        "</testsuite>\n",
        attribute("name", path_), count_, failures_, errors_, cases_);
  }

 private:
  static std::string problem(const char* element, const char* type, const std::string& message,
                             const std::string& lines) {
    return fmt::format("<{}{}{}>{}</{}>", element, attribute("message", message),
                       attribute("type", type), escaped(lines), element);
  }

  void addCase(const std::string& name, const std::string& line, const std::string& content) {
    ++count_;
    cases_ += "  <testcase" + attribute("classname", path_) + attribute("name", name) +
              attribute("file", path_) + line + ">" + content + "</testcase>\n";
  }

  const std::string& path_;
  std::string cases_;
  std::size_t count_ = 0;
  std::size_t failures_ = 0;
  std::size_t errors_ = 0;
};

class JunitWriter : public FindingWriter {
 public:
  JunitWriter() {
    writeOutput("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<testsuites name=\"tarn check\">\n");
  }

  void add(const std::string& path, const Finding& finding) override {
    Suite suite(path);
    const std::string failure = finding.failure();
    if (!failure.empty()) suite.addError("unreadable-file", failure);
    for (const Fault& fault : finding.faults) suite.addFailure(fault);
    if (finding.leftOutCount() > 0) suite.addFailure("left-out", leftOutMessage(finding));
    if (finding.status == Status::Done) suite.addPassed();
    writeOutput(suite.text());
  }

  void finish(Status /*status*/) override { writeOutput("</testsuites>\n"); }
};

}  // namespace

std::unique_ptr<FindingWriter> makeJunitWriter() { return std::make_unique<JunitWriter>(); }

}  // namespace tarn
