#pragma once

#include <cstddef>
#include <limits>
#include <list>
#include <memory>
#include <string>
#include <vector>

#include "libtarn/OutOfMemory.hpp"
#include "libtarn/TarnApi.hpp"
#include "libtarn/model/Diagnostic.hpp"

namespace libtarn {
namespace util {
class TarnFactory;
}

namespace model {

using libDomXml::OutOfMemory;

class IElement;
class LibTarnCmData;
class LibTarnDocumentInternal;
class LibTarnManagedObject;
class TarnDomDocument;
struct RefusedChange;

namespace validation {
struct Violation;
}

/// A configuration document: what a host creates to read, build, query, change and print one.
///
/// Owns everything in it; pointers to elements are good until the document is destroyed. A new
/// document has a declaration and an empty root. One thread at a time; different documents may be
/// used by different threads.
class TARN_API LibTarnDocument {
 public:
  /// The tag of the root.
  static constexpr const char* TAG_NAME = "tarn";

  /// Its memory comes from maps; without any the process ends (assertion "memory").
  LibTarnDocument();
  /// Its memory comes from maps. OutOfMemory::Throw: where there is none, std::bad_alloc comes out
  /// of the operation, and the document can be used on, parsed again or destroyed.
  explicit LibTarnDocument(OutOfMemory outOfMemory);
  /// Takes over `document`, made with `new`: for a name validator or an index factory of the
  /// host's, or for memory from the heap.
  explicit LibTarnDocument(TarnDomDocument* document);
  LibTarnDocument(const LibTarnDocument&) = delete;
  LibTarnDocument& operator=(const LibTarnDocument&) = delete;
  virtual ~LibTarnDocument();

  /// Parses a copy of the zero-terminated `text` and builds the indexes; checks the rules of the
  /// format when `validate` is set. Returns 0, or 1 for malformed XML, or 2 for a broken rule of
  /// the model; the cause goes to the log at level ERROR. After a failure the document keeps what
  /// was built and stays usable. A second parse replaces the first; elements of the first stay
  /// readable.
  int parse(const char* text, bool validate);
  /// As above for a text that ends with a zero byte, which the document takes over without copying
  /// it. A vector without that zero is malformed.
  int parse(std::vector<char> text, bool validate);
  /// Validates a text: what getDiagnostic() of a new document holds after parse() with validation.
  /// `read()` returns the text as a vector of char that ends with a zero byte. It is called once
  /// when the text is valid, which takes little more memory than the text and less time than a
  /// parse, logs nothing and keeps no document; otherwise a second time, for the same text, which
  /// is then parsed. Throws what `read()` throws, and std::bad_alloc without memory.
  template <class Read>
  static Diagnostic validate(Read read) {
    return validateText([](void* reader) { return (*static_cast<Read*>(reader))(); }, &read);
  }
  /// Checks the rules of the format on the document as it is now, and that no object was given the
  /// name of another one. Returns 0, or 2 for a broken rule; the first one goes to the log at level
  /// ERROR.
  int validate();
  /// As above, and replaces what `violations` holds by all that are found, in the order of a
  /// Validator's walk: the first `limit`, and only while the texts of those before hold fewer than
  /// `byteLimit` bytes. `count`, when given, gets the number of all of them. Two objects of one
  /// name are found only where no other rule is broken.
  int validate(std::vector<validation::Violation>* violations,
               std::size_t limit = std::numeric_limits<std::size_t>::max(),
               std::size_t byteLimit = std::numeric_limits<std::size_t>::max(),
               std::size_t* count = nullptr);
  /// Whether an element below the root has a tag that is only the beginning of the one that the
  /// format has for it, such as "li". A copy has the whole tag, in a merge as well, and rules that
  /// the element did not have to follow. Walks the document; does not recurse on the depth.
  bool hasAbbreviatedTags() const;
  /// What the last parse() or validate() found; success before the first. Good until the next one.
  const Diagnostic& getDiagnostic() const { return diagnostic_; }

  /// The DOM document behind it, which stays its own.
  TarnDomDocument* getItsTarnDomDocument() const;
  /// Bytes that the document takes: its pool and the texts that it has taken over.
  std::size_t getMemorySize() const;
  /// The factory for new elements of this document.
  util::TarnFactory& getFactory() const { return *factory_; }
  /// The place of the "<" of an element's start tag, in bytes from the start of the text that was
  /// parsed last, as it was handed over (a byte order mark counts). util::locate() turns it into
  /// line and column. util::NO_OFFSET for an element that was not parsed from that text, such as
  /// one that the host made or that a merge brought. Constant time.
  std::size_t getTextOffset(const IElement& element) const;
  /// Attributes of the root, null when absent.
  const char* getVersion() const;
  const char* getXmlns() const;
  /// The first cmData, or null.
  LibTarnCmData* getLibTarnCmData() const;
  /// Appends a detached cmData of this document.
  void addLibTarnCmData(LibTarnCmData& cmData);
  /// The managed objects of the first cmData that match `mask`, in byte order of their names; empty
  /// without a cmData.
  std::list<LibTarnManagedObject*> getMOsMatchingMask(const LibTarnManagedObject& mask) const;
  /// Applies LibTarnManagedObject::change(mask, changes) to the managed objects of the first cmData
  /// that match `mask`. Logs each object at level INFO.
  void setChangesToMOs(const LibTarnManagedObject& mask, const LibTarnManagedObject& changes);
  /// As setChangesToMOs(), with LibTarnManagedObject::tryChange() in place of change(). Returns the
  /// first refusal, or success when every object that matches was changed as asked, also when none
  /// matches. `refused`, when given, gets all refusals in place of what it holds, in byte order of
  /// the names that the objects had. Ends behind an object that a broken rule refuses, as its
  /// exception ends setChangesToMOs(): the same values would break it in the others. Throws
  /// std::bad_alloc, with the objects before changed.
  Diagnostic tryChangesToMOs(const LibTarnManagedObject& mask, const LibTarnManagedObject& changes,
                             std::vector<RefusedChange>* refused = nullptr);

 private:
  int parseImpl(std::vector<char> text, bool validate);
  static bool isKnownToBeValid(std::vector<char> text);
  static Diagnostic validateText(std::vector<char> (*read)(void* reader), void* reader);
  void checkRules() const;
  void checkRootRules() const;
  int fail(int code, const std::string& message, std::size_t offset);

  std::unique_ptr<TarnDomDocument> domDocument_;
  LibTarnDocumentInternal* root_;
  util::TarnFactory* factory_;
  Diagnostic diagnostic_;
};

}  // namespace model
}  // namespace libtarn
