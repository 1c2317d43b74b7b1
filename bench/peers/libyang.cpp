// libyang with the same data as a YANG model (network.yang): managed objects, parameters, lists and
// extensions are list entries with their names as keys.

#include <libyang/libyang.h>

#include <set>
#include <stdexcept>

#include "../Work.hpp"
#include "libtarn/libtarn.hpp"

namespace bench {

namespace {

using namespace libtarn::model;

// The document as data of the model.

std::string escaped(const char* text) {
  std::string result;
  for (; *text; ++text) {
    switch (*text) {
      case '&':
        result += "&amp;";
        break;
      case '<':
        result += "&lt;";
        break;
      default:
        result += *text;
    }
  }
  return result;
}

std::string element(const char* name, const char* text) {
  return std::string("<") + name + ">" + escaped(text) + "</" + name + ">";
}

std::string parameter(const Scalar& scalar) {
  return "<p>" + element("name", scalar.getName()) + element("value", scalar.getValue()) + "</p>\n";
}

std::string listOf(const List& list) {
  std::string data = "<list>" + element("name", list.getName());
  // A leaf-list holds no value twice.
  std::set<std::string> values;
  for (const Scalar* value = list.getScalarValues(); value;
       value = value->getNextSiblingElement()) {
    if (values.insert(value->getValue()).second) data += element("value", value->getValue());
  }
  std::size_t number = 0;
  for (const Structure* item = list.getStructuredValues(); item;
       item = item->getNextSiblingElement()) {
    data += "<item>" + element("number", std::to_string(number++).c_str());
    for (const auto& component : item->getComponents()) data += parameter(*component.second);
    data += "</item>\n";
  }
  return data + "</list>\n";
}

std::string extensionOf(const LibTarnExtension& extension) {
  std::string data = "<extension>" + element("name", extension.getName());
  for (const Scalar* scalar = extension.getParameters(); scalar;
       scalar = scalar->getNextSiblingElement()) {
    data += parameter(*scalar);
  }
  return data + "</extension>\n";
}

std::string networkData(const std::string& text) {
  LibTarnDocument document;
  document.parse(text.c_str(), false);
  std::string data = "<network xmlns=\"urn:libtarn:bench:network\">\n";
  for (const LibTarnManagedObject* object :
       document.getLibTarnCmData()->getLibTarnManagedObjects()) {
    data += "<managed-object>" + element("dist-name", object->getDistName().getText()) +
            element("class", object->getClass());
    if (object->getVersion()) data += element("version", object->getVersion());
    for (const auto& scalar : object->getScalarParameters()) data += parameter(*scalar.second);
    for (const auto& list : object->getListParameters()) data += listOf(*list.second);
    for (const LibTarnExtension* extension = object->getExtensions(); extension;
         extension = extension->getNextSiblingElement()) {
      data += extensionOf(*extension);
    }
    data += "</managed-object>\n";
  }
  return data + "</network>\n";
}

const std::string& cachedNetworkData(const std::string& text) {
  static std::string source;
  static std::string data;
  if (source != text) {
    source = text;
    data = networkData(text);
  }
  return data;
}

ly_ctx* context() {
  static ly_ctx* const shared = [] {
    ly_ctx* made = nullptr;
    if (ly_ctx_new(TARN_YANG_DIRECTORY, 0, &made) != LY_SUCCESS ||
        !ly_ctx_load_module(made, "network", nullptr, nullptr)) {
      throw std::runtime_error("cannot load network.yang");
    }
    return made;
  }();
  return shared;
}

struct LibyangState {
  explicit LibyangState(const std::string& text) : data(cachedNetworkData(text)) { context(); }
  LibyangState(const LibyangState&) = delete;
  LibyangState& operator=(const LibyangState&) = delete;
  ~LibyangState() { lyd_free_all(tree); }

  bool parse() {
    return lyd_parse_data_mem(context(), data.c_str(), LYD_XML, LYD_PARSE_ONLY, 0, &tree) ==
           LY_SUCCESS;
  }
  bool validate() {
    return lyd_validate_all(&tree, context(), LYD_VALIDATE_PRESENT, nullptr) == LY_SUCCESS;
  }

  const std::string data;
  lyd_node* tree = nullptr;
};

std::shared_ptr<LibyangState> parsed(const std::string& text) {
  auto state = std::make_shared<LibyangState>(text);
  state->parse();
  return state;
}

struct MergeState {
  explicit MergeState(const std::string& text) : source(text), delta(text) {
    source.parse();
    delta.parse();
  }

  LibyangState source;
  LibyangState delta;
};

}  // namespace

void addLibyangWorks(std::vector<Work>& works) {
  works.push_back({PARSE, "libyang",
                   [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<LibyangState>(text),
                                    [](LibyangState& state) { return state.parse(); });
                   },
                   true});
  works.push_back({LOAD_AND_VALIDATE, "libyang",
                   [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<LibyangState>(text), [](LibyangState& state) {
                       return state.parse() && state.validate();
                     });
                   },
                   true});
  works.push_back({VALIDATE, "libyang",
                   [](const std::string& text, Memory /*memory*/) {
                     return roundOn(parsed(text),
                                    [](LibyangState& state) { return state.validate(); });
                   },
                   true});
  works.push_back({PRINT, "libyang",
                   [](const std::string& text, Memory /*memory*/) {
                     return roundOn(parsed(text), [](LibyangState& state) {
                       char* printed = nullptr;
                       const bool done = lyd_print_mem(&printed, state.tree, LYD_XML,
                                                       LYD_PRINT_WITHSIBLINGS) == LY_SUCCESS;
                       free(printed);
                       return done;
                     });
                   },
                   true});
  works.push_back({MERGE, "libyang",
                   [](const std::string& text, Memory /*memory*/) {
                     return roundOn(std::make_shared<MergeState>(text), [](MergeState& state) {
                       return lyd_merge_siblings(&state.source.tree, state.delta.tree, 0) ==
                              LY_SUCCESS;
                     });
                   },
                   true});
}

}  // namespace bench
