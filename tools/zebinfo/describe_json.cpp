#include "describe.h"
#include "json_writer.h"
#include "output.h"
#include "proc_words.h"
#include "zeb/sdk/description.hpp"

namespace zebinfo {

namespace {

namespace description = zeb::sdk::description;

// Null where the description says nothing.
void word(JsonWriter& json, std::string_view key, std::string_view text) {
  json.key(key);
  if (text.empty()) {
    json.null();
  } else {
    json.value(text);
  }
}

void handle(JsonWriter& json, const description::Handle* handle) {
  word(json, "handle", handle != nullptr ? handle->kind : "");
  word(json, "givenBackWith", handle != nullptr ? handle->release : "");
}

void parameters(JsonWriter& json, const description::Function& function) {
  json.key("parameters").array([&] {
    for (const auto& parameter : function.parameters) {
      json.object([&] {
        json.key("name").value(parameter.name);
        json.key("type").value(parameter.type);
        json.key("direction").value(wordOf(parameter.direction));
        word(json, "null", wordOf(parameter.null));
        json.key("ownership").value(wordOf(parameter.ownership));
        word(json, "endedBy", parameter.endedBy);
        word(json, "onFailure", wordOf(parameter.onFailure));
        handle(json, parameter.handle);
      });
    }
  });
}

void result(JsonWriter& json, const description::Result& result) {
  json.key("result").object([&] {
    json.key("type").value(result.type);
    json.key("convention").value(wordOf(result.convention));
    json.key("failure").value(wordOf(result.failure));
    json.key("zeroIsAnswer").value(result.zeroIsAnswer);
    json.key("ownership").value(wordOf(result.ownership));
    handle(json, result.handle);
  });
}

void function(JsonWriter& json, const description::Function& function,
              const std::string& declaration) {
  json.key("name").value(function.name);
  json.key("since").value(std::string_view(since(function)));
  json.key("declaration").value(std::string_view(declaration));
  json.key("signature").value(function.signature);
  json.key("summary").value(function.summary);
  json.key("threads").array([&] {
    for (const std::string_view tag : tags(function.threads)) json.value(tag);
  });
  result(json, function.result);
  parameters(json, function);
}

void interface(JsonWriter& json, const DescribedInterface& described) {
  json.object([&] {
    json.key("name").value(described.interface->name);
    json.key("title").value(described.interface->title);
    json.key("header").value(described.interface->header);
    json.key("procs").array([&] {
      for (const auto* proc : described.procs) {
        json.object([&] {
          json.key("method").value(proc->method);
          json.key("version").value(proc->version);
          json.key("older").value(proc->older);
          function(json, *proc, typeInC(*proc));
        });
      }
    });
  });
}

}  // namespace

std::string asJson(const Described& described) {
  JsonWriter json;
  json.object([&] {
    json.key("schema").value(kJsonSchema);
    json.key("interfaces").array([&] {
      for (const DescribedInterface& one : described.interfaces) interface(json, one);
    });
    json.key("exports").array([&] {
      for (const auto* one : described.exports) {
        json.object([&] { function(json, *one, functionInC(*one)); });
      }
    });
  });
  return json.text();
}

}  // namespace zebinfo
