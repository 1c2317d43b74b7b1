#include <optional>

#include "../Work.hpp"
#include "../walk_indexes.hpp"
#include "libtarn/libtarn.hpp"

namespace bench {

namespace {

using libtarn::editor::TarnMerge;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using namespace libtarn::model;

// A document with a mapped pool, which is always fresh memory, or with a pool on the heap, which
// may be warm.
class TarnState {
 public:
  TarnState(const std::string& text, Memory memory) {
    text_.reserve(text.size() + 1);
    text_.assign(text.begin(), text.end());
    text_.push_back('\0');
    if (memory == Memory::COLD) {
      document_.emplace();
      return;
    }
    document_.emplace(new TarnDomDocument(nullptr, nullptr));
  }

  LibTarnDocument& document() { return *document_; }
  bool load(bool validate) { return document_->parse(std::move(text_), validate) == 0; }
  void release() { document_.reset(); }

 private:
  std::vector<char> text_;
  std::optional<LibTarnDocument> document_;
};

struct DomState {
  DomState(const std::string& source, Memory memory)
      : text(source), document(memory == Memory::COLD) {}

  std::string text;
  libDomXml::DomDocument document;
};

struct MergeState {
  MergeState(const std::string& text, Memory memory) : source(text, memory), delta(text, memory) {
    source.load(false);
    delta.load(false);
    for (LibTarnManagedObject* object :
         delta.document().getLibTarnCmData()->getLibTarnManagedObjects()) {
      object->setOperation(LibTarnManagedObject::Operation::UPDATE);
    }
  }

  TarnState source;
  TarnState delta;
};

std::shared_ptr<TarnState> loaded(const std::string& text, Memory memory) {
  auto state = std::make_shared<TarnState>(text, memory);
  state->load(false);
  return state;
}

}  // namespace

void addTarnWorks(std::vector<Work>& works) {
  works.push_back({PARSE, "DomDocument", [](const std::string& text, Memory memory) {
                     return roundOn(std::make_shared<DomState>(text, memory), [](DomState& state) {
                       return state.document.rapidParse(state.text.data()) == 0;
                     });
                   }});
  works.push_back({LOAD, "libtarn", [](const std::string& text, Memory memory) {
                     return roundOn(std::make_shared<TarnState>(text, memory),
                                    [](TarnState& state) { return state.load(false); });
                   }});
  works.push_back({LOAD_AND_WALK, "libtarn", [](const std::string& text, Memory memory) {
                     return roundOn(std::make_shared<TarnState>(text, memory),
                                    [](TarnState& state) {
                                      return state.load(false) && walkIndexes(state.document()) > 0;
                                    });
                   }});
  works.push_back({LOAD_AND_VALIDATE, "libtarn", [](const std::string& text, Memory memory) {
                     return roundOn(std::make_shared<TarnState>(text, memory),
                                    [](TarnState& state) { return state.load(true); });
                   }});
  works.push_back({VALIDATE, "libtarn", [](const std::string& text, Memory memory) {
                     return roundOn(loaded(text, memory), [](TarnState& state) {
                       return state.document().validate() == 0;
                     });
                   }});
  works.push_back({PRINT, "libtarn", [](const std::string& text, Memory memory) {
                     return roundOn(loaded(text, memory), [](TarnState& state) {
                       std::string printed;
                       libtarn::util::dumpTarnDocument(state.document(), printed);
                       return !printed.empty();
                     });
                   }});
  works.push_back(
      {MERGE, "libtarn", [](const std::string& text, Memory memory) {
         return roundOn(std::make_shared<MergeState>(text, memory), [](MergeState& state) {
           return TarnMerge(state.source.document()).mergeDocument(state.delta.document());
         });
       }});
  works.push_back({RELEASE, "libtarn", [](const std::string& text, Memory memory) {
                     return roundOn(loaded(text, memory), [](TarnState& state) {
                       state.release();
                       return true;
                     });
                   }});
}

}  // namespace bench
