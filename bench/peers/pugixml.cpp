#include <cstring>
#include <map>
#include <optional>
#include <pugixml.hpp>

#include "../Work.hpp"

namespace bench {

namespace {

struct ByText {
  bool operator()(const char* a, const char* b) const { return std::strcmp(a, b) < 0; }
};

using NameIndex = std::map<const char*, pugi::xml_node, ByText>;

// The indexes that libtarn has for a managed object, built by hand: parameters and lists by name,
// and the components of each item.
struct ObjectIndex {
  pugi::xml_node object;
  NameIndex scalars;
  NameIndex lists;
  std::vector<NameIndex> items;
};

struct PugixmlState {
  explicit PugixmlState(const std::string& source) : text(source) {}

  bool parse() {
    return document.emplace().load_buffer_inplace(text.data(), text.size(), pugi::parse_default);
  }

  bool load() { return parse() && indexObjects(); }

  std::string text;
  std::optional<pugi::xml_document> document;
  std::map<const char*, ObjectIndex, ByText> objects;
  std::multimap<const char*, pugi::xml_node, ByText> classes;

 private:
  bool indexObjects() {
    for (const pugi::xml_node object :
         document->child("tarn").child("cmData").children("managedObject")) {
      const auto inserted = objects.try_emplace(object.attribute("distName").value());
      if (!inserted.second) return false;
      inserted.first->second.object = object;
      classes.emplace(object.attribute("class").value(), object);
      if (!indexParameters(inserted.first->second)) return false;
    }
    return true;
  }

  static bool indexParameters(ObjectIndex& index) {
    for (const pugi::xml_node child : index.object.children()) {
      const bool isScalar = std::strcmp(child.name(), "p") == 0;
      const bool isList = !isScalar && std::strcmp(child.name(), "list") == 0;
      if (isScalar && !add(index.scalars, child)) return false;
      if (isList && !(add(index.lists, child) && indexItems(child, index.items))) return false;
    }
    return true;
  }

  static bool indexItems(pugi::xml_node list, std::vector<NameIndex>& items) {
    for (const pugi::xml_node item : list.children("item")) {
      NameIndex& components = items.emplace_back();
      for (const pugi::xml_node component : item.children("p")) {
        if (!add(components, component)) return false;
      }
    }
    return true;
  }

  static bool add(NameIndex& index, pugi::xml_node element) {
    return index.emplace(element.attribute("name").value(), element).second;
  }
};

std::size_t walkIndexes(const PugixmlState& state) {
  std::size_t count = 0;
  for (const auto& object : state.objects) {
    for (const auto& scalar : object.second.scalars) count += !scalar.second.empty();
    for (const auto& list : object.second.lists) count += !list.second.empty();
    for (const NameIndex& item : object.second.items) {
      for (const auto& component : item) count += !component.second.empty();
    }
  }
  const auto cells = state.classes.equal_range("CELL");
  for (auto cell = cells.first; cell != cells.second; ++cell) count += !cell->second.empty();
  return count;
}

struct StringWriter : pugi::xml_writer {
  void write(const void* data, std::size_t size) override {
    out.append(static_cast<const char*>(data), size);
  }

  std::string out;
};

std::shared_ptr<PugixmlState> parsed(const std::string& text) {
  auto state = std::make_shared<PugixmlState>(text);
  state->parse();
  return state;
}

}  // namespace

void addPugixmlWorks(std::vector<Work>& works) {
  works.push_back({PARSE, "pugixml", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<PugixmlState>(text),
                                    [](PugixmlState& state) { return state.parse(); });
                   }});
  works.push_back({LOAD, "pugixml and indexes", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<PugixmlState>(text),
                                    [](PugixmlState& state) { return state.load(); });
                   }});
  works.push_back(
      {LOAD_AND_WALK, "pugixml and indexes", [](const std::string& text, Memory /*memory*/) {
         return roundOn(std::make_shared<PugixmlState>(text),
                        [](PugixmlState& state) { return state.load() && walkIndexes(state) > 0; });
       }});
  works.push_back({PRINT, "pugixml", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(parsed(text), [](PugixmlState& state) {
                       StringWriter writer;
                       state.document->save(writer, " ");
                       return !writer.out.empty();
                     });
                   }});
  works.push_back({RELEASE, "pugixml", [](const std::string& text, Memory /*memory*/) {
                     return roundOn(parsed(text), [](PugixmlState& state) {
                       state.document.reset();
                       return true;
                     });
                   }});
}

}  // namespace bench
