#include "commands.hpp"

#include "documentFile.hpp"
#include "model/LibTarnDocument.hpp"
#include "util/dumpTarnDocument.hpp"

namespace tarn {

using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;

namespace {

constexpr std::size_t output_block = std::size_t{1} << 16U;

// Appends `text` (null: nothing) such that it holds no tab and no line end.
void appendField(std::string& line, const char* text) {
  for (; text && *text != '\0'; ++text) {
    switch (*text) {
      case '\\':
        line += "\\\\";
        break;
      case '\t':
        line += "\\t";
        break;
      case '\n':
        line += "\\n";
        break;
      case '\r':
        line += "\\r";
        break;
      default:
        line += *text;
    }
  }
}

}  // namespace

void printCommand(const std::string& path) {
  LibTarnDocument document;
  loadDocument(path, document);
  std::string text;
  libtarn::util::dumpTarnDocument(document, text);
  writeOutput(text);
}

void listCommand(const std::string& path, const ObjectMask& mask) {
  LibTarnDocument document;
  LibTarnManagedObject& pattern = mask.build(document.getFactory());
  loadDocument(path, document);
  std::string lines;
  for (const LibTarnManagedObject* object : document.getMOsMatchingMask(pattern)) {
    appendField(lines, object->getDistName().getText());
    lines += '\t';
    appendField(lines, object->getClass());
    lines += '\n';
    if (lines.size() < output_block) continue;
    writeOutput(lines);
    lines.clear();
  }
  writeOutput(lines);
}

}  // namespace tarn
