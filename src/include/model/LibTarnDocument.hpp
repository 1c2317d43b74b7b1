#pragma once

#include <cstddef>
#include <cstdint>
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
/// Owns everything in it; pointers to elements are valid until the document is destroyed. A new
/// document has a declaration and an empty root. Used by one thread at a time; different documents
/// may be used by different threads.
class TARN_API LibTarnDocument {
 public:
  /// The tag of the root.
  static constexpr const char* TAG_NAME = "tarn";

  /// An empty document with memory from maps. Out of memory, the process ends with the assertion
  /// "memory".
  LibTarnDocument();
  /// An empty document with memory from maps. With OutOfMemory::Throw an operation that runs out of
  /// memory throws std::bad_alloc; the document can still be used, parsed again or destroyed.
  explicit LibTarnDocument(OutOfMemory outOfMemory);
  /// Takes over `document`, allocated with `new`: for a host's name validator or index factory, or
  /// for memory from the heap.
  explicit LibTarnDocument(TarnDomDocument* document);
  LibTarnDocument(const LibTarnDocument&) = delete;
  LibTarnDocument& operator=(const LibTarnDocument&) = delete;
  virtual ~LibTarnDocument();

  /// Parses a copy of the NUL-terminated `text` and builds the indexes; with `validate`, also
  /// validates the rules of the format. Returns 0, or 1 for malformed XML, or 2 for a broken rule
  /// of the model; the cause is logged at level ERROR. After a failure the document keeps what was
  /// built and stays usable. A second parse replaces the first; elements of the first stay
  /// readable.
  int parse(const char* text, bool validate);
  /// Like the other overload, for a text that ends with a NUL. The document takes the text over and
  /// does not copy it. A vector without that NUL is malformed.
  int parse(std::vector<char> text, bool validate);
  /// Validates a text and returns what getDiagnostic() of a new document would hold after parse()
  /// with validation.
  ///
  /// `read()` returns the text as a vector of char that ends with a NUL. For a valid text it is
  /// called once. That takes little more memory than the text and less time than a parse; it logs
  /// nothing and keeps no document. Otherwise `read()` is called a second time, for the same text,
  /// which is then parsed. Throws what `read()` throws, and std::bad_alloc without memory.
  template <class Read>
  static Diagnostic validate(Read read) {
    return validateText([](void* reader) { return (*static_cast<Read*>(reader))(); }, &read);
  }
  /// Parses `text`, which ends with a NUL, and calls `visit()` with a LibTarnManagedObject& for
  /// each managed object of the first cmData, in the order of the text. Keeps no object: that takes
  /// little more memory than the text and less time than a parse.
  ///
  /// An object, and everything in it, may be read until `visit()` returns, and must not be changed.
  /// Texts in it, such as its name, are valid as long as `text` is, which is parsed in place and
  /// stays the caller's. Returns true when every object was visited. Returns false for a text that
  /// cannot be read in this way, such as one that parse() refuses without validation: what was
  /// visited then counts for nothing, and parse() of the unchanged text loads it or gives the
  /// reason. Does not validate, and logs nothing. Throws what `visit()` throws, and std::bad_alloc
  /// without memory.
  template <class Visit>
  static bool visitObjects(std::vector<char>& text, Visit visit) {
    return visitObjects(
        text,
        [](void* host, LibTarnManagedObject& object) { (*static_cast<Visit*>(host))(object); },
        &visit);
  }
  /// Validates the document as it is now: the rules of the format, and that names of objects are
  /// unique. Returns 0, or 2 for a broken rule; the first violation is logged at level ERROR.
  int validate();
  /// Like validate(), and replaces the content of `violations` by those found, in the order of a
  /// Validator's walk. Only the first `limit` are recorded, and only while the texts of those
  /// before hold fewer than `byteLimit` bytes. `*count` becomes the number of all, unless `count`
  /// is null. Duplicate names are found only when no other rule is broken.
  int validate(std::vector<validation::Violation>* violations, std::size_t limit = SIZE_MAX,
               std::size_t byteLimit = SIZE_MAX, std::size_t* count = nullptr);
  /// Returns whether an element below the root has a tag that is only the beginning of the one that
  /// the format has for it, such as "li". A copy has the whole tag, in a merge as well, and rules
  /// that the element did not have to follow. Walks the document; does not recurse on the depth.
  bool hasAbbreviatedTags() const;
  /// Returns the result of the last parse() or validate(); success before the first. Valid until
  /// the next one.
  const Diagnostic& getDiagnostic() const { return diagnostic_; }

  /// Returns the DOM document, which this document owns.
  TarnDomDocument* getItsTarnDomDocument() const;
  /// Returns the bytes that the document occupies: its pool and the texts that it has taken over.
  std::size_t getMemorySize() const;
  /// Returns the factory for new elements of this document.
  util::TarnFactory& getFactory() const { return *factory_; }
  /// Returns the byte offset of the "<" of an element's start tag, from the start of the text that
  /// was parsed last, as it was handed over (a byte order mark counts). util::locate() turns it
  /// into line and column. Returns util::NO_OFFSET for an element that was not parsed from that
  /// text: one that the host made, or that a merge added. Constant time.
  std::size_t getTextOffset(const IElement& element) const;
  /// Returns the attribute "version" of the root, null when absent.
  const char* getVersion() const;
  /// Returns the attribute "xmlns" of the root, null when absent.
  const char* getXmlns() const;
  /// Returns the first cmData, or null.
  LibTarnCmData* getLibTarnCmData() const;
  /// Appends a detached cmData of this document.
  void addLibTarnCmData(LibTarnCmData& cmData);
  /// Returns the managed objects of the first cmData that match `mask`, in byte order of their
  /// names; none without a cmData.
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
  static bool visitObjects(std::vector<char>& text,
                           void (*visit)(void* host, LibTarnManagedObject& object), void* host);
  static Diagnostic validateText(std::vector<char> (*read)(void* reader), void* reader);
  void validateTree() const;
  void validateRoot() const;
  int fail(int code, const std::string& message, std::size_t offset);

  std::unique_ptr<TarnDomDocument> domDocument_;
  LibTarnDocumentInternal* root_;
  util::TarnFactory* factory_;
  Diagnostic diagnostic_;
};

}  // namespace model
}  // namespace libtarn
