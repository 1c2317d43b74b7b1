// Load, print and merge of documents made to be slow. hostile.py counts the instructions under
// callgrind. Each phase is one function; its count includes everything that it calls.
//
// Usage: hostile --list
//        hostile SHAPE BYTES load|print|merge|times

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "libtarn/libtarn.hpp"
#include "text/textHash.hpp"

using namespace libtarn::model;

void libtarn::util::Logger::print(Level /*level*/, const char* /*location*/,
                                  const char* /*function*/, const char* /*message*/) {}

// With C linkage, so that callgrind gets the names as they are here.
extern "C" {

[[gnu::noinline]] void measured_load(LibTarnDocument& document, std::vector<char>& text) {
  document.parse(std::move(text), true);
}

[[gnu::noinline]] void measured_print(LibTarnDocument& document, std::string& printed) {
  libtarn::util::dumpTarnDocument(document, printed);
}

[[gnu::noinline]] void measured_merge(LibTarnDocument& source, LibTarnDocument& delta) {
  libtarn::editor::TarnMerge(source).mergeDocument(delta);
}

}  // extern "C"

namespace {

// The `number`-th piece of a document.
using Piece = std::function<std::string(std::size_t number)>;

std::string whole(const std::string& content) {
  return "<tarn xmlns='tarn21.xsd' version='2.1'><cmData type='plan'>" + content +
         "</cmData></tarn>";
}

const std::string HEADER = "<header><log dateTime='d' action='a'/></header>";

// `before`, pieces up to that number of bytes, `after`.
std::string repeat(std::size_t bytes, const std::string& before, const Piece& piece,
                   const std::string& after) {
  std::string text = before;
  for (std::size_t i = 0; text.size() < bytes; ++i) text += piece(i);
  return text + after;
}

std::string always(std::size_t bytes, const std::string& before, const std::string& piece,
                   const std::string& after) {
  return repeat(
      bytes, before, [&piece](std::size_t) { return piece; }, after);
}

std::string nested(std::size_t bytes, const std::string& before, const std::string& tag,
                   const std::string& after) {
  const std::size_t depth = bytes / (2 * tag.size() + 5);
  std::string text = before;
  for (std::size_t i = 0; i < depth; ++i) text += "<" + tag + ">";
  for (std::size_t i = 0; i < depth; ++i) text += "</" + tag + ">";
  return text + after;
}

std::string digits(std::size_t number) { return std::to_string(number); }

// In random order.
std::string shuffled(std::size_t number) {
  return std::to_string(number * 2654435761U % 4294967291U);
}

// Names of 16 bytes that all have one hash: the second word cancels the first one.
std::string crowding(std::size_t number) {
  constexpr std::uint64_t PRIME = 0x9E3779B97F4A7C15U;
  static std::mt19937_64 random(1);
  for (;;) {
    const std::uint64_t first = random();
    std::uint64_t state = 16 * PRIME;
    state = (state ^ first) * PRIME;
    state ^= state >> 32U;
    const std::uint64_t second = state ^ 0x0123456789ABCDEFU;
    std::string name(16, '\0');
    std::memcpy(name.data(), &first, 8);
    std::memcpy(name.data() + 8, &second, 8);
    if (name.find_first_of(std::string("\0'&\"<", 5)) == std::string::npos) return name;
  }
  return digits(number);
}

// The number of slots of a table with that number of names, and the slot of a name in it.
std::size_t slotsFor(std::size_t count) {
  std::size_t slots = 16;
  while (slots / 3 * 2 < count) slots *= 2;
  return slots;
}

std::size_t slotOf(const std::string& name, std::size_t slots) {
  return libtarn::model::indexation::textHash(name.data(), name.size()) & (slots - 1);
}

std::string object(const std::string& name, const std::string& content) {
  return "<managedObject class='C' distName='" + name + "'>" + content + "</managedObject>";
}

struct Shape {
  const char* name;
  std::function<std::string(std::size_t bytes)> make;
  /// The source of the merge, beside the text itself; without the function, an empty document.
  std::function<std::string(std::size_t bytes)> makeSource = nullptr;
};

// Objects that fill neighbouring slots of a table, each in the slot of its hash, ...
constexpr std::size_t BYTES_OF_OBJECT = 64;

std::string objectsInARow(std::size_t bytes) {
  const std::size_t count = bytes / BYTES_OF_OBJECT;
  std::vector<std::string> names(count);
  std::size_t missing = count;
  for (std::uint32_t number = 0; missing > 0; ++number) {
    std::string name = "A-" + std::to_string(number);
    const std::size_t slot = slotOf(name, slotsFor(count));
    if (slot >= count || !names[slot].empty()) continue;
    names[slot] = std::move(name);
    --missing;
  }
  std::string text;
  for (const std::string& name : names) text += object(name, "");
  return text;
}

// ... and as many others whose search begins at the start of that row.
std::string objectsBeforeTheRow(std::size_t bytes) {
  const std::size_t count = bytes / BYTES_OF_OBJECT;
  std::string text;
  std::size_t made = 0;
  for (std::uint32_t number = 0; made < count; ++number) {
    const std::string name = "B-" + std::to_string(number);
    if (slotOf(name, slotsFor(count)) >= count / 64 + 1) continue;
    text += object(name, "");
    ++made;
  }
  return text;
}

const std::string OPEN = "<managedObject class='C' distName='A-1'>";
const std::string CLOSE = "</managedObject>";

const Shape SHAPES[] = {
    {"an ordinary document",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER,
           [](std::size_t i) {
             return object("NET-1/SITE-" + shuffled(i),
                           "<p name='administrativeState'>unlocked</p><p name='uplinkThreshold'>" +
                               digits(i) +
                               "</p><list name='neighbours'><p>1</p></list>"
                               "<extension name='tool'><p name='comment'>x</p></extension>");
           },
           ""));
     }},
    {"nested lists",
     [](std::size_t bytes) { return whole(nested(bytes, HEADER + OPEN, "list", CLOSE)); }},
    {"nested objects",
     [](std::size_t bytes) { return whole(nested(bytes, HEADER + OPEN, "managedObject", CLOSE)); }},
    {"nested bodies", [](std::size_t bytes) { return whole(nested(bytes, HEADER, "cmData", "")); }},
    {"smallest elements",
     [](std::size_t bytes) { return whole(always(bytes, HEADER, "<p/>", "")); }},
    {"smallest objects",
     [](std::size_t bytes) { return whole(always(bytes, HEADER, "<m/>", "")); }},
    {"smallest bodies without an end",
     [](std::size_t bytes) { return always(bytes, "<tarn>", "<c>", ""); }},
    {"smallest objects without an end",
     [](std::size_t bytes) { return always(bytes, "<tarn>", "<m>", ""); }},
    {"smallest attributes",
     [](std::size_t bytes) { return whole(always(bytes, HEADER + "<m ", "a=''", "/>")); }},
    {"attributes of one object",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + "<managedObject class='C' distName='A-1'",
           [](std::size_t i) { return " a" + digits(i) + "=''"; }, "/>"));
     }},
    {"attributes of one parameter",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN + "<p name='a'",
           [](std::size_t i) { return " a" + digits(i) + "=''"; }, "/>" + CLOSE));
     }},
    {"one attribute again and again",
     [](std::size_t bytes) {
       return whole(
           always(bytes, HEADER + "<managedObject class='C' distName='A-1'", " a=''", "/>"));
     }},
    {"parameters in no order",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN, [](std::size_t i) { return "<p name='" + shuffled(i) + "'/>"; },
           CLOSE));
     }},
    {"parameters whose names begin alike",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN,
           [](std::size_t i) { return "<p name='" + std::string(200, 'a') + shuffled(i) + "'/>"; },
           CLOSE));
     }},
    {"parameters of one hash",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN, [](std::size_t i) { return "<p name='" + crowding(i) + "'/>"; },
           CLOSE));
     }},
    {"objects of one hash",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER, [](std::size_t i) { return object(crowding(i), ""); }, ""));
     }},
    {"objects whose names begin alike",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER,
           [](std::size_t i) { return object(std::string(200, 'A') + "-" + shuffled(i), ""); },
           ""));
     }},
    {"objects looked for along a row of slots",
     [](std::size_t bytes) { return whole(HEADER + objectsBeforeTheRow(bytes)); },
     [](std::size_t bytes) { return whole(HEADER + objectsInARow(bytes)); }},
    {"a duplicate at the end",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER, [](std::size_t i) { return object("A-" + shuffled(i), "<p name='a'/>"); },
           object("A-" + shuffled(0), "")));
     }},
    {"an unknown operation at the end",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER, [](std::size_t i) { return object("A-" + shuffled(i), "<p name='a'/>"); },
           "<managedObject class='C' distName='B-1' operation='x'/>"));
     }},
    {"a NUL at the end",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER, [](std::size_t i) { return object("A-" + shuffled(i), "<p name='a'/>"); },
           object("B-1", "<p name='a'>&#0;</p>")));
     }},
    {"a header after all objects",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, "", [](std::size_t i) { return object("A-" + shuffled(i), ""); }, HEADER));
     }},
    {"headers", [](std::size_t bytes) { return whole(always(bytes, "", "<header/>", "")); }},
    {"log entries",
     [](std::size_t bytes) {
       return whole(always(bytes, "<header>", "<log dateTime='d' action='a'/>", "</header>"));
     }},
    {"log entries after other elements",
     [](std::size_t bytes) {
       return whole(always(bytes, always(bytes / 2, "<header>", "<p/>", ""),
                           "<log dateTime='d' action='a'/>", "</header>"));
     }},
    {"extensions of one name",
     [](std::size_t bytes) {
       return whole(always(bytes, HEADER + OPEN, "<extension name='e'/>", CLOSE));
     }},
    {"extensions whose names begin alike",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN,
           [](std::size_t i) {
             return "<extension name='" + std::string(100, 'e') + digits(i) + "'/>";
           },
           CLOSE));
     }},
    {"parameters of one extension",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN + "<extension name='e'>",
           [](std::size_t i) { return "<p name='" + digits(i) + "'/>"; }, "</extension>" + CLOSE));
     }},
    {"lists",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN, [](std::size_t i) { return "<list name='" + shuffled(i) + "'/>"; },
           CLOSE));
     }},
    {"items of one list",
     [](std::size_t bytes) {
       return whole(always(bytes, HEADER + OPEN + "<list name='l'>", "<item><p name='a'/></item>",
                           "</list>" + CLOSE));
     }},
    {"bodies",
     [](std::size_t bytes) {
       return always(bytes, "<tarn xmlns='tarn21.xsd' version='2.1'>", "<cmData type='plan'/>",
                     "</tarn>");
     }},
    {"roots", [](std::size_t bytes) { return always(bytes, "", "<tarn a=''/>", ""); }},
    {"declarations",
     [](std::size_t bytes) { return always(bytes, "", "<?xml a=''?>", whole(HEADER)); }},
    {"texts between elements",
     [](std::size_t bytes) {
       return whole(repeat(
           bytes, HEADER + OPEN,
           [](std::size_t i) { return "x &amp; y<p name='" + digits(i) + "'/>"; }, CLOSE));
     }},
    {"references",
     [](std::size_t bytes) {
       return whole(
           always(bytes, HEADER + OPEN + "<p name='a'>", "&amp;&#65;&#x20AC;&x;&", "</p>" + CLOSE));
     }},
    {"one long reference",
     [](std::size_t bytes) {
       return whole(always(bytes, HEADER + OPEN + "<p name='a'>&#", "0", "65;</p>" + CLOSE));
     }},
    {"comments", [](std::size_t bytes) { return always(bytes, "", "<!----->", whole(HEADER)); }},
    {"beginnings of the end of a comment",
     [](std::size_t bytes) { return always(bytes, "<!--", "-- ->", "-->" + whole(HEADER)); }},
    {"brackets of a document type",
     [](std::size_t bytes) {
       return always(bytes / 2, "<!DOCTYPE a ", "[", "") +
              always(bytes / 2, "", "]", ">" + whole(HEADER));
     }},
    {"blanks", [](std::size_t bytes) { return always(bytes, "", " \n\t", whole(HEADER)); }},
    {"one long name",
     [](std::size_t bytes) {
       return whole(always(bytes, HEADER + "<managedObject distName='", "A", "-1' class='C'/>"));
     }},
};

/// The text of a shape, and the source of its merge.
struct Texts {
  std::vector<char> text;
  std::string source;
};

Texts textsOf(const Shape& shape, std::size_t bytes) {
  const std::string text = shape.make(bytes);
  Texts texts;
  texts.text.assign(text.begin(), text.end());
  texts.text.push_back('\0');
  texts.source = shape.makeSource ? shape.makeSource(bytes) : whole(HEADER);
  return texts;
}

void run(const Texts& texts, const std::string& phase) {
  const std::vector<char>& text = texts.text;
  std::vector<char> copy = text;
  LibTarnDocument document;
  measured_load(document, copy);
  std::string printed;
  if (phase == "print") measured_print(document, printed);
  if (phase != "merge") return;
  LibTarnDocument delta;
  delta.parse(text, false);
  // Into the same document, and into one that has none of the objects.
  measured_merge(document, delta);
  LibTarnDocument source;
  source.parse(texts.source.c_str(), false);
  if (const LibTarnCmData* const cmData = delta.getLibTarnCmData()) {
    // The first merge has changed their operations to "update".
    for (LibTarnManagedObject* each : cmData->getLibTarnManagedObjects()) each->clearOperation();
  }
  measured_merge(source, delta);
}

template <class Work>
double nanoseconds(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::nano>(std::chrono::steady_clock::now() - start).count();
}

// Medians of a few rounds: nanoseconds for each byte of text (of the output, for print), and bytes
// of memory for each byte of text.
void reportTimes(const Texts& texts) {
  const std::vector<char>& text = texts.text;
  std::vector<double> times[3];
  double memory = 0;
  const auto size = static_cast<double>(text.size());
  for (int round = 0; round < 5; ++round) {
    std::vector<char> copy = text;
    LibTarnDocument document;
    times[0].push_back(nanoseconds([&] { measured_load(document, copy); }) / size);
    memory = static_cast<double>(document.getMemorySize()) / size;
    std::string printed;
    const double print = nanoseconds([&] { measured_print(document, printed); });
    times[1].push_back(print / static_cast<double>(std::max(printed.size(), text.size())));
    LibTarnDocument delta;
    delta.parse(text, false);
    LibTarnDocument source;
    source.parse(texts.source.c_str(), false);
    times[2].push_back(nanoseconds([&] { measured_merge(source, delta); }) / size);
  }
  for (std::vector<double>& each : times) {
    std::nth_element(each.begin(), each.begin() + 2, each.end());
    std::printf("%.3f ", each[2]);
  }
  std::printf("%.2f\n", memory);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], "--list") == 0) {
    for (const Shape& shape : SHAPES) std::puts(shape.name);
    return 0;
  }
  if (argc != 4) {
    std::fprintf(stderr, "usage: hostile --list | SHAPE BYTES load|print|merge|times\n");
    return 64;
  }
  for (const Shape& shape : SHAPES) {
    if (std::strcmp(shape.name, argv[1]) != 0) continue;
    const Texts texts = textsOf(shape, std::strtoul(argv[2], nullptr, 10));
    if (std::strcmp(argv[3], "times") == 0) {
      reportTimes(texts);
    } else {
      run(texts, argv[3]);
    }
    return 0;
  }
  std::fprintf(stderr, "%s: no such shape\n", argv[1]);
  return 64;
}
