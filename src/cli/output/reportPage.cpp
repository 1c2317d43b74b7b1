#include "output/reportPage.hpp"

#include <map>
#include <string_view>

#include "output/report/NameTree.hpp"
#include "output/report/ObjectLines.hpp"
#include "output/report/PageText.hpp"
#include "output/report/ViolationSearch.hpp"
#include "pageTemplate.hpp"
#include "textOrEmpty.hpp"

// The page is written front to back, in the order in which a browser reads it: the index, with
// which the script shows the tree; the script; and lines with everything else. data.js describes
// them.

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;

namespace {

constexpr std::string_view TITLE_MARK = "<!--title-->";
constexpr std::string_view INDEX_MARK = "<!--index-->";
constexpr std::string_view LINES_MARK = "<!--lines-->";

/// Objects that stand out, and what the page says about each of them.
struct Mark {
  std::string_view name;
  std::string_view sign;
  std::vector<std::size_t> objects;  // their places in the order of the tree
  std::vector<Findings> findings;    // of each of these
};

/// Writes "[" value, ... "]".
template <class Values, class Append>
void appendArray(std::string& page, const Values& values, Append append) {
  page += '[';
  const char* separator = "";
  for (const auto& value : values) {
    page += separator;
    append(value);
    separator = ",";
  }
  page += ']';
}

template <class Values>
void appendTexts(std::string& page, const Values& values) {
  appendArray(page, values, [&page](std::string_view value) { appendPageText(page, value); });
}

class PageWriter {
 public:
  PageWriter(std::string_view path, LibTarnDocument& document,
             const std::vector<const LibTarnManagedObject*>& objects)
      : path_(path), names_(treeOfNames(objects)), search_(document) {
    findViolations();
  }

  ReportPage write() {
    appendUpTo(TITLE_MARK);
    page_ += htmlText(title());
    appendUpTo(INDEX_MARK);
    page_ += "<!--";
    appendIndex();
    page_ += "-->";
    appendUpTo(LINES_MARK);
    appendLines();
    page_ += template_;
    return {std::move(page_), search_.leftOut()};
  }

 private:
  void findViolations() {
    std::size_t place = 0;
    for (const TreeName& name : names_) {
      if (!name.object) continue;
      Findings findings = search_.ofObject(*name.object);
      if (findings.count() > 0) {
        violations_.objects.push_back(place);
        violations_.findings.push_back(std::move(findings));
      }
      ++place;
    }
  }

  std::string title() const {
    if (path_ == "-") return "standard input";
    return std::string(path_.substr(path_.rfind('/') + 1));
  }

  void appendUpTo(std::string_view mark) {
    const std::size_t place = template_.find(mark);
    page_ += template_.substr(0, place);
    template_.remove_prefix(place + mark.size());
  }

  void appendIndex() {
    page_ += "{\"file\":";
    appendPageText(page_, path_);
    page_ += R"(,"own":{"messages":)";
    appendTexts(page_, search_.aroundObjects().messages);
    page_ += ",\"leftOut\":" + std::to_string(search_.aroundObjects().leftOut);
    page_ += "},\"leftOut\":" + std::to_string(search_.leftOut());
    page_ += ",\n\"segments\":";
    appendArray(page_, names_,
                [this](const TreeName& name) { appendPageText(page_, name.segment); });
    page_ += ",\n\"depths\":";
    appendArray(page_, names_,
                [this](const TreeName& name) { page_ += std::to_string(name.depth); });
    appendClasses();
    page_ += ",\n\"marks\":[";
    appendMark(violations_);
    page_ += "]}";
  }

  void appendClasses() {
    std::map<std::string_view, std::size_t> numbers;
    std::vector<std::string_view> classes;
    page_ += ",\n\"classOf\":";
    appendArray(page_, names_, [&](const TreeName& name) {
      if (!name.object) {
        page_ += "-1";
        return;
      }
      const std::string_view text = textOrEmpty(name.object->getClass());
      const auto [it, isNew] = numbers.insert({text, classes.size()});
      if (isNew) classes.push_back(text);
      page_ += std::to_string(it->second);
    });
    page_ += ",\n\"classes\":";
    appendTexts(page_, classes);
  }

  void appendMark(const Mark& mark) {
    page_ += "{\"name\":";
    appendPageText(page_, mark.name);
    page_ += ",\"sign\":";
    appendPageText(page_, mark.sign);
    page_ += ",\"objects\":";
    appendArray(page_, mark.objects, [this](std::size_t place) { page_ += std::to_string(place); });
    page_ += ",\"counts\":";
    appendArray(page_, mark.findings,
                [this](const Findings& findings) { page_ += std::to_string(findings.count()); });
    page_ += '}';
  }

  void appendLines() {
    PageLines lines(page_, violations_.name);
    for (const Findings& findings : violations_.findings) {
      lines.begin();
      page_ += '[' + std::to_string(findings.leftOut) + ',';
      appendTexts(page_, findings.messages);
      page_ += ']';
    }
    lines.end();
    ObjectLines objects(page_);
    for (const TreeName& name : names_) {
      if (name.object) objects.append(*name.object);
    }
    objects.end();
  }

  std::string_view path_;
  std::vector<TreeName> names_;
  ViolationSearch search_;
  Mark violations_{"violation", "⚠", {}, {}};
  std::string_view template_ = REPORT_PAGE;  // the rest of it
  std::string page_;
};

}  // namespace

ReportPage reportPage(const std::string& path, LibTarnDocument& document,
                      const std::vector<const LibTarnManagedObject*>& objects) {
  return PageWriter(path, document, objects).write();
}

}  // namespace tarn
