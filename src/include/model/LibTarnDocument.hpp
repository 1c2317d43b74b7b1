#pragma once

#include <list>
#include <memory>
#include <string>
#include <vector>

#include "OutOfMemory.hpp"
#include "TarnApi.hpp"
#include "model/Diagnostic.hpp"

namespace libtarn {
namespace util {
class TarnFactory;
}

namespace model {

using libDomXml::OutOfMemory;

class LibTarnCmData;
class LibTarnDocumentInternal;
class LibTarnManagedObject;
class TarnDomDocument;

/// A configuration document: what a host creates to read, build, query, change and print one.
///
/// Owns everything in it; pointers to elements are good until the document is destroyed. A new
/// document has a declaration and an empty root. One thread at a time; different documents may be
/// used by different threads.
class TARN_API LibTarnDocument {
 public:
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
  /// Whether a text that ends with a zero byte is known to be one for which a parse() of a new
  /// document, with validation, returns 0. False also for some for which it does, and for every
  /// other one: parse() tells, and why. Takes little more memory than the text, and less time than
  /// that parse. Logs nothing. Throws std::bad_alloc without memory.
  static bool isKnownToBeValid(std::vector<char> text);
  /// Checks the rules of the format on the document as it is now, and that no object was given the
  /// name of another one. Returns 0, or 2 for a broken rule; the first one goes to the log at level
  /// ERROR.
  int validate();
  /// What the last parse() or validate() found; success before the first. Good until the next one.
  const Diagnostic& getDiagnostic() const { return diagnostic_; }

  /// The DOM document behind it, which stays its own.
  TarnDomDocument* getItsTarnDomDocument() const;
  /// Bytes that the document takes: its pool and the texts that it has taken over.
  std::size_t getMemorySize() const;
  /// The factory for new elements of this document.
  util::TarnFactory& getFactory() const { return *factory_; }
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

 private:
  template <class Text>
  int parseImpl(Text& text, bool validate);
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
