#include "documents/differenceWriter.hpp"

#include <algorithm>
#include <string>
#include <string_view>

#include "libtarn/editor/TarnDiff.hpp"
#include "output/LineWriter.hpp"
#include "output/escaped.hpp"
#include "output/json.hpp"
#include "output/printable.hpp"
#include "text/naturalOrder.hpp"

namespace tarn {

using libtarn::editor::Difference;
using libtarn::editor::TarnDiff;
using Kind = Difference::Kind;
using Part = Difference::Part;

namespace {

const char* wordFor(Kind kind) {
  return kind == Kind::Added ? "added" : kind == Kind::Removed ? "removed" : "changed";
}

bool isOutsideOfObjects(const Difference& difference) {
  return !difference.oldObject && !difference.newObject;
}

bool isBefore(const Difference& a, const Difference& b) {
  const bool isOutside = isOutsideOfObjects(a);
  if (isOutside || isOutsideOfObjects(b)) return isOutside && !isOutsideOfObjects(b);
  return isNaturallyBefore(a.distName, b.distName);
}

std::string valueText(const char* value) {
  if (!value || !*value) return "''";
  std::string escaped;
  appendEscaped(escaped, value);
  return printable(escaped);
}

void appendText(std::string& line, const Difference& difference) {
  if (!isOutsideOfObjects(difference)) line += printable(difference.distName) + ": ";
  if (difference.part != Part::Object) line += printable(difference.path()) + ": ";
  if (difference.kind == Kind::Changed && (difference.oldValue || difference.newValue)) {
    line += valueText(difference.oldValue) + " -> " + valueText(difference.newValue);
    return;
  }
  line += wordFor(difference.kind);
  const char* const value =
      difference.kind == Kind::Removed ? difference.oldValue : difference.newValue;
  if (value) line += ": " + valueText(value);
}

Json orNull(const char* text) { return text ? Json(text) : Json(nullptr); }

std::string jsonOf(const Difference& difference) {
  const bool isObject = difference.part == Part::Object;
  return jsonText({{"dn", orNull(isOutsideOfObjects(difference) ? nullptr : difference.distName)},
                   {"kind", wordFor(difference.kind)},
                   {"path", isObject ? Json(nullptr) : Json(difference.path())},
                   {"old", orNull(difference.oldValue)},
                   {"new", orNull(difference.newValue)}});
}

void writeJson(LineWriter& writer, const Difference& difference, bool operations) {
  writer.lines() += jsonOf(difference);
  writer.endLine();
  if (difference.part != Part::Object) return;
  const auto* const object = difference.newObject ? difference.newObject : difference.oldObject;
  for (const Difference& content : TarnDiff::contentsOf(*object, difference.kind, operations)) {
    writer.lines() += jsonOf(content);
    writer.endLine();
  }
}

}  // namespace

void writeDifferences(std::vector<Difference> differences, const DifferenceForm& form) {
  std::stable_sort(differences.begin(), differences.end(), isBefore);
  LineWriter writer;
  for (const Difference& difference : differences) {
    if (form.json) {
      writeJson(writer, difference, form.operations);
    } else {
      appendText(writer.lines(), difference);
      writer.endLine();
    }
  }
  writer.flush();
}

}  // namespace tarn
