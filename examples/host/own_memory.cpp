// Gives a document memory from the host's own budget, and tells what the document costs.
//
// Usage: own_memory DOCUMENT

#include <cstdlib>
#include <memory>
#include <new>

#include "files.hpp"
#include "libtarn.hpp"
#include "model/DistinguishedNameValidator.hpp"
#include "model/indexation/TarnIndexFactory.hpp"

using libtarn::model::DistinguishedNameValidator;
using libtarn::model::LibTarnDocument;
using libtarn::model::LibTarnManagedObject;
using libtarn::model::List;
using libtarn::model::Scalar;
using libtarn::model::TarnDomDocument;
namespace indexation = libtarn::model::indexation;

namespace {

// Bytes that documents may still take. Documents of several threads would share an atomic.
std::size_t budget = 0;

// A block with its size in front, aligned as malloc() aligns. Null is not allowed as an answer: it
// would stop the process. An exception leaves the document as it is, to be destroyed.
constexpr std::size_t PREFIX = alignof(std::max_align_t);

void* allocate(std::size_t size) {
  if (size > budget) throw std::bad_alloc();
  auto* const memory = static_cast<char*>(std::malloc(PREFIX + size));
  if (!memory) throw std::bad_alloc();
  budget -= size;
  *reinterpret_cast<std::size_t*>(memory) = size;
  return memory + PREFIX;
}

void release(void* block) {
  char* const memory = static_cast<char*>(block) - PREFIX;
  budget += *reinterpret_cast<std::size_t*>(memory);
  std::free(memory);
}

// Indexes are to be in the document's memory, too, which is there only after the factory.
class IndexFactory : public indexation::ITarnIndexFactory {
 public:
  void useMemoryOf(TarnDomDocument& document) {
    factory_ = std::make_unique<indexation::TarnIndexFactory>(document);
  }
  indexation::ITarnUniqueIndex<Scalar>* createUniqueScalarNameTarnIndex() const override {
    return factory_->createUniqueScalarNameTarnIndex();
  }
  indexation::ITarnUniqueIndex<List>* createUniqueIndexForList() const override {
    return factory_->createUniqueIndexForList();
  }
  indexation::ITarnUniqueAndNonUniqueMultiIndex<LibTarnManagedObject>*
  createUniqueAndNonUniqueMultiIndex() const override {
    return factory_->createUniqueAndNonUniqueMultiIndex();
  }

 private:
  std::unique_ptr<indexation::TarnIndexFactory> factory_;
};

void load(const char* path, std::size_t bytes) {
  budget = bytes;
  DistinguishedNameValidator names;
  IndexFactory indexes;
  std::vector<char> text = readText(path);
  const std::size_t textSize = text.size();
  try {
    auto domDocument = std::make_unique<TarnDomDocument>(&names, &indexes);
    // Before the document has taken anything.
    domDocument->set_allocator(&allocate, &release);
    indexes.useMemoryOf(*domDocument);
    LibTarnDocument document(domDocument.release());
    if (document.parse(std::move(text), true) != 0) return;
    const bool cheap = document.getMemorySize() < 12 * textSize;
    std::cout << bytes / 1024 << " KiB are enough; the document takes " << (cheap ? "less" : "more")
              << " than 12 times its text\n";
  } catch (const std::bad_alloc&) {
    std::cout << bytes / 1024 << " KiB are too few\n";
  }
  std::cout << (budget == bytes ? "all of them came back\n" : "some are lost\n");
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 64;
  load(argv[1], std::size_t{64} * 1024);
  load(argv[1], std::size_t{4096} * 1024);
  return 0;
}
