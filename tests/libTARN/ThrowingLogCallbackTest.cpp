// Runs every statement of the library that logs, once with a log callback that keeps the lines and
// once with one that throws. Results and documents must be the same.

#include <gtest/gtest.h>

#include <set>
#include <sstream>
#include <string>

#include "libtarn/libtarn.hpp"
#include "libtarn/model/LibTarnCmDataImp.hpp"
#include "libtarn/model/LibTarnDocumentDeclaration.hpp"
#include "libtarn/model/LibTarnDocumentInternal.hpp"
#include "libtarn/model/LibTarnExtensionImp.hpp"
#include "libtarn/model/LibTarnHeaderImp.hpp"
#include "libtarn/model/LibTarnManagedObjectImp.hpp"
#include "libtarn/model/ListImp.hpp"
#include "libtarn/model/LogImp.hpp"
#include "libtarn/model/ScalarImp.hpp"
#include "libtarn/model/StructureImp.hpp"
#include "support/CapturedLog.hpp"
#include "support/consistency.hpp"
#include "support/documents.hpp"
#include "support/treeDump.hpp"

namespace {
using tarn_test::documentTextWithLog;

using namespace libtarn::model;
using Operation = LibTarnManagedObject::Operation;

enum class LogCallback { KEEPS_LINES, THROWS };

const char* const OBJECTS =
    "<managedObject class='C' distName='A-1'><p name='a'>1</p></managedObject>"
    "<managedObject class='D' distName='A-2'/><managedObject class='C' distName='A-3'/>";

/// The results of the operations, and the documents afterwards.
class Transcript {
 public:
  template <class Value>
  Transcript& operator<<(const Value& value) {
    out_ << value << '\n';
    return *this;
  }
  void keep(LibTarnDocument& document) {
    std::string printed;
    libtarn::util::dumpTarnDocument(document, printed);
    *this << printed << tarn_test::brokenDocument(document, tarn_test::Indexes::SOUND);
  }
  std::string get() const { return out_.str(); }

 private:
  std::ostringstream out_;
};

void parseAndValidate(Transcript& transcript) {
  LibTarnDocument document;
  for (const std::string& each :
       {documentTextWithLog(OBJECTS), std::string("<tarn><"), std::string("<foo/>"),
        documentTextWithLog("<managedObject/>"),
        documentTextWithLog("<managedObject distName='A-1'/><managedObject distName='A-1'/>"),
        documentTextWithLog(OBJECTS)}) {
    transcript << document.parse(each.c_str(), true) << document.getDiagnostic().message;
    transcript.keep(document);
  }
  transcript << document.validate();
  document.getLibTarnCmData()->getLibTarnHeader()->removeThisElement();
  transcript << document.validate();
}

void edit(Transcript& transcript) {
  LibTarnDocument document;
  document.parse(documentTextWithLog(OBJECTS).c_str(), false);
  LibTarnManagedObject& mask = libtarn::util::ManagedObjectBuilder(document).setClass("C").get();
  LibTarnManagedObject& values =
      libtarn::util::ManagedObjectBuilder(document).setVersion("2").get();
  document.setChangesToMOs(mask, values);
  transcript.keep(document);

  LibTarnCmData& cmData = *document.getLibTarnCmData();
  LibTarnManagedObject& object = *cmData.getLibTarnManagedObject("A-1");
  transcript << int(object.setDistName("A-2")) << cmData.getManagedObjectNumber();
  dynamic_cast<TarnDomElement&>(object).setAttribute("distName", "A-9");
  transcript << int(object.setDistName("A-8")) << cmData.getManagedObjectNumber();
  transcript << (document.getFactory().createLog("a", nullptr, "t")->getDateTime() != nullptr);
  transcript.keep(document);
}

template <class Imp, class Element>
void cloneOfNoUse(Transcript& transcript, LibTarnDocument& document, Element* element) {
  libDomXml::IDomDocument* const dom = document.getItsTarnDomDocument();
  transcript << dynamic_cast<Imp&>(*element).clone(dom);
}

void clones(Transcript& transcript) {
  LibTarnDocument document;
  document.parse(documentTextWithLog(OBJECTS).c_str(), false);
  auto& factory = document.getFactory();
  cloneOfNoUse<LibTarnCmDataImp>(transcript, document, document.getLibTarnCmData());
  cloneOfNoUse<LibTarnHeaderImp>(transcript, document, factory.createLibTarnHeader());
  cloneOfNoUse<LogImp>(transcript, document, factory.createLog("a", nullptr, nullptr));
  cloneOfNoUse<LibTarnManagedObjectImp>(
      transcript, document, document.getLibTarnCmData()->getLibTarnManagedObject("A-1"));
  cloneOfNoUse<LibTarnExtensionImp>(transcript, document, factory.createLibTarnExtension("e"));
  cloneOfNoUse<ScalarImp>(transcript, document, factory.createScalar("p", nullptr));
  cloneOfNoUse<ListImp>(transcript, document, factory.createList("l"));
  cloneOfNoUse<StructureImp>(transcript, document, factory.createStructure());
  TarnDomDocument& dom = *document.getItsTarnDomDocument();
  transcript << dom.getRootElement()->clone(factory);
  transcript
      << dynamic_cast<LibTarnDocumentDeclaration&>(*dom.getDocumentDeclaration()).clone(factory);
  transcript.keep(document);
}

void merge(Transcript& transcript) {
  LibTarnDocument source;
  LibTarnDocument fitting;
  LibTarnDocument conflicting;
  LibTarnDocument empty;
  source.parse(documentTextWithLog(OBJECTS).c_str(), false);
  fitting.parse(documentTextWithLog("<managedObject class='C' distName='B-1'/>"
                                    "<managedObject class='C' distName='A-2' operation='delete'/>")
                    .c_str(),
                false);
  conflicting.parse(
      documentTextWithLog("<managedObject distName='A-1' operation='create'/>").c_str(), false);
  LibTarnManagedObject& object = *conflicting.getLibTarnCmData()->getLibTarnManagedObject("A-1");
  using libtarn::editor::TarnMerge;
  transcript << TarnMerge(empty).mergeDocument(fitting) << TarnMerge(source).mergeDocument(empty)
             << TarnMerge(source).mergeDocument(source)
             << TarnMerge(source).mergeDocument(conflicting)
             << TarnMerge(source).mergeDocument(fitting)
             << TarnMerge(empty).mergeManagedObject(object);
  transcript.keep(source);
}

struct Outcome {
  std::string transcript;
  std::string lines;
  std::set<std::string> locations;
};

Outcome run(LogCallback callback) {
  tarn_test::CapturedLog log;
  if (callback == LogCallback::THROWS) log.throwFromPrint();
  Transcript transcript;
  parseAndValidate(transcript);
  edit(transcript);
  clones(transcript);
  merge(transcript);

  Outcome outcome{transcript.get(), "", {}};
  for (const auto& line : log.lines()) {
    outcome.locations.insert(line.location);
    outcome.lines += line.level + ' ' + line.function + ' ';
    // The rest of the message is the time.
    const bool hasTime = line.function == "updateDateTime";
    outcome.lines += (hasTime ? line.message.substr(0, 17) : line.message) + '\n';
  }
  return outcome;
}

TEST(ThrowingLogCallbackTest, NothingChangesWhateverIsLogged) {
  const Outcome quiet = run(LogCallback::KEEPS_LINES);
  const Outcome throwing = run(LogCallback::THROWS);
  EXPECT_EQ(quiet.transcript, throwing.transcript);
  EXPECT_EQ(quiet.lines, throwing.lines);
  EXPECT_EQ(quiet.locations, throwing.locations);
  // Every location that logs was reached: 5 of documents, 10 of forbidden copies, 2 of a parse,
  // 2 of changes, 2 of names, 1 of the time, 5 of the merge.
  EXPECT_EQ(quiet.locations.size(), 27U);
}

}  // namespace
