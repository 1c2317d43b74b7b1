// One text loaded in every way: as a text and as a vector, with and without validation, into a new
// document and into one that had another text, with indexes that the load fills, that a walk after
// it fills, and that are the host's. All have the same result and the same document. A visit of the
// objects, which keeps no document, has the same objects.

#include <deque>
#include <string>
#include <vector>

#include "../support/Text.hpp"
#include "../support/check.hpp"
#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/TarnDomDocument.hpp"
#include "libtarn/model/indexation/TarnIndexFactory.hpp"
#include "support/MapIndex.hpp"
#include "support/consistency.hpp"

namespace {

using namespace libtarn::model;
using namespace libtarn::model::indexation;

class MapIndexFactory : public TarnIndexFactory {
 public:
  using TarnIndexFactory::TarnIndexFactory;

  ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const override {
    return &indexes_.emplace_back();
  }

 private:
  mutable std::deque<tarn_test::MapIndex> indexes_;
};

// Everything that a host can see of a document.
struct Answer {
  int code;
  std::string message;
  std::size_t offset;
  std::string content;  // empty unless it was loaded

  bool operator==(const Answer& other) const {
    return code == other.code && message == other.message && offset == other.offset &&
           content == other.content;
  }
};

void describe(const LibTarnManagedObject& object, std::string& out) {
  out += std::string(object.getDistName().getText() ? object.getDistName().getText() : "-") + ' ' +
         object.getOperation().toString();
  for (const auto& entry : object.getScalarParameters()) {
    out += std::string(" ") + entry.first + '=' + entry.second->getValue();
  }
  for (const auto& entry : object.getListParameters()) {
    out += std::string(" ") + entry.first + '[';
    for (const Structure* item = entry.second->getStructuredValues(); item;
         item = item->getNextSiblingElement()) {
      for (const auto& component : item->getComponents()) {
        out += std::string(component.first) + '=' + component.second->getValue() + ' ';
      }
    }
    out += ']';
  }
  out += '\n';
}

std::string contentOf(LibTarnDocument& document) {
  std::string out;
  libtarn::util::dumpTarnDocument(document, out);
  for (const LibTarnCmData* cmData = document.getLibTarnCmData(); cmData;
       cmData = cmData->getNextSiblingElement()) {
    out += cmData->getType().toString() + '\n';
    for (const LibTarnManagedObject* object : cmData->getLibTarnManagedObjects()) {
      describe(*object, out);
      const char* const className = object->getClass() ? object->getClass() : "";
      for (const auto* each : cmData->getLibTarnManagedObjectsByClass(className)) {
        if (each->getDistName().getText()) out += each->getDistName().getText();
        out += ' ';
      }
    }
  }
  return out;
}

Answer answerOf(LibTarnDocument& document, int code) {
  const Diagnostic& diagnostic = document.getDiagnostic();
  const bool loaded = code == 0;
  fuzz::checkNothing(tarn_test::brokenDocument(
      document, loaded ? tarn_test::Indexes::IN_STEP : tarn_test::Indexes::SOUND));
  return {code, diagnostic.message, diagnostic.offset, loaded ? contentOf(document) : ""};
}

std::vector<char> vectorOf(fuzz::Text& text) {
  return std::vector<char>(text.get(), text.get() + text.size() + 1);
}

Answer load(fuzz::Text& text, bool validate) {
  LibTarnDocument document;
  return answerOf(document, document.parse(text.get(), validate));
}

Answer loadVector(fuzz::Text& text, bool validate) {
  LibTarnDocument document(new TarnDomDocument(nullptr, nullptr));
  return answerOf(document, document.parse(vectorOf(text), validate));
}

// Into a document that had loaded another text, and into one that had failed to.
Answer loadAgain(fuzz::Text& text, bool validate) {
  LibTarnDocument document;
  document.parse(
      "<?xml version='1.0'?><tarn a='b'><cmData type='plan'><managedObject distName='A-1'>"
      "<p name='a'/></managedObject></cmData></tarn>",
      false);
  document.parse("<?xml c='d'?><tarn e='f'><cmData type='plan'><managedObject distName='A-1'><p>",
                 false);
  // A later text keeps what it does not replace of an earlier one.
  document.parse(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?><tarn xmlns=\"tarn21.xsd\" "
      "version=\"2.1\"></tarn>",
      false);
  return answerOf(document, document.parse(text.get(), validate));
}

// The index is the host's, so that the library walks.
Answer loadByWalk(fuzz::Text& text, bool validate) {
  LibTarnDocument pool;
  MapIndexFactory factory(*pool.getItsTarnDomDocument());
  LibTarnDocument document(new TarnDomDocument(nullptr, &factory));
  return answerOf(document, document.parse(text.get(), validate));
}

// Step by step, with the operations of the document's parts.
Answer loadInSteps(fuzz::Text& text, bool validate) {
  LibTarnDocument document;
  TarnDomDocument& dom = *document.getItsTarnDomDocument();
  std::vector<char> copy = vectorOf(text);
  Answer answer{0, "", 0, ""};
  try {
    dom.parse(copy);
    dom.getRootElement()->rebuildIndexersAndInitializeEnums();
    if (validate) {
      validation::Validator validator;
      dom.getRootElement()->accept(validator);
    }
  } catch (const rapidxml::parse_error& error) {
    answer = {1, error.what(), dom.getTextOffset(error), ""};
  } catch (const exceptions::ModelException& error) {
    answer = {2, error.what(), 0, ""};
  }
  fuzz::checkNothing(tarn_test::brokenDocument(
      document, answer.code == 0 ? tarn_test::Indexes::IN_STEP : tarn_test::Indexes::SOUND));
  if (answer.code == 0) answer.content = contentOf(document);
  return answer;
}

// The objects of the first cmData in the order of the text.
std::string objectsOf(fuzz::Text& text) {
  LibTarnDocument document;
  document.parse(text.get(), false);
  std::string objects;
  const LibTarnCmData* const cmData = document.getLibTarnCmData();
  auto* object = cmData ? dynamic_cast<LibTarnManagedObject*>(
                              cmData->getFirstChildElement(LibTarnManagedObject::TAG_NAME))
                        : nullptr;
  for (; object; object = object->getNextSiblingElement()) describe(*object, objects);
  return objects;
}

// A visit may leave a text to a load. Otherwise it has the objects of one.
void checkVisit(fuzz::Text& text, const Answer& answer) {
  std::vector<char> copy = vectorOf(text);
  std::string visited;
  const bool isComplete = LibTarnDocument::visitObjects(
      copy, [&visited](LibTarnManagedObject& object) { describe(object, visited); });
  if (!isComplete) return;
  fuzz::check(answer.code == 0, "what can be visited can be loaded");
  fuzz::check(visited == objectsOf(text), "a visit has the objects of a load");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Text text(data, size);
  for (const bool validate : {false, true}) {
    const Answer answer = load(text, validate);
    fuzz::check(loadVector(text, validate) == answer, "a vector is loaded as its text is");
    fuzz::check(loadAgain(text, validate) == answer, "a second load is as the first one");
    fuzz::check(loadByWalk(text, validate) == answer, "a walk comes to the same");
    fuzz::check(loadInSteps(text, validate) == answer, "the steps come to the same");
    if (!validate) {
      checkVisit(text, answer);
      continue;
    }
    const Diagnostic found = LibTarnDocument::validate([&text] { return vectorOf(text); });
    fuzz::check(found.code == answer.code, "a check without a document comes to the same");
  }
  return 0;
}
