#include <fmt/format.h>

#include <span>

#include "json_writer.h"
#include "output.h"
#include "proc_words.h"

namespace zebinfo {

namespace {

using Procs = std::span<const ProcRow>;

// Calls `visit(name, group)` for each run of procs that have the name in common. The procs are
// sorted, so that each name has one run.
template <class Visit>
void forEachGroup(Procs procs, Name ProcRow::*nameOf, Visit visit) {
  while (!procs.empty()) {
    const Name& name = procs.front().*nameOf;
    std::size_t size = 1;
    while (size < procs.size() && procs[size].*nameOf == name) ++size;
    visit(name, procs.first(size));
    procs = procs.subspan(size);
  }
}

void writeModules(JsonWriter& json, const std::vector<ModuleRow>& modules) {
  json.key("modules").array([&] {
    for (const ModuleRow& module : modules) {
      json.object([&] {
        const bool runs = module.problem.empty();
        json.key("file").value(std::string_view(module.file));
        json.key("started").value(runs);
        json.key("problem").value(runs ? std::nullopt : std::optional(module.problem));
      });
    }
  });
}

std::optional<std::string> standing(Standing standing) {
  switch (standing) {
    case Standing::own:
      return "own";
    case Standing::replaced:
      return "replaced";
    case Standing::notDescribed:
      return "not described";
    case Standing::foreign:
      break;
  }
  return std::nullopt;
}

void writeDescribed(JsonWriter& json, const zeb::sdk::description::Proc* proc) {
  if (proc == nullptr) {
    for (const auto* name : {"version", "older", "since", "signature"}) json.key(name).null();
    return;
  }
  json.key("version").value(proc->version);
  json.key("older").value(proc->older);
  json.key("since").value(std::string_view(since(*proc)));
  json.key("signature").value(proc->signature);
}

void writeProc(JsonWriter& json, const ProcRow& proc) {
  json.object([&] {
    json.key("name").value(proc.procName);
    json.key("address").value(std::string_view(fmt::format("{:#x}", proc.address)));
    json.key("file").value(proc.file);
    json.key("fileOffset").value(proc.fileOffset);
    json.key("standing").value(standing(proc.standing));
    writeDescribed(json, proc.described);
    json.key("publishedSignature").value(proc.publishedSignature);
    json.key("signatureOf").value(proc.signatureOf);
  });
}

void writeMissing(JsonWriter& json, const std::vector<MissingRow>& missing) {
  json.key("missing").array([&] {
    for (const MissingRow& row : missing) {
      json.object([&] {
        json.key("interface").value(std::string_view(row.interfaceName));
        json.key("method").value(row.proc->method);
        json.key("name").value(row.proc->name);
        writeDescribed(json, row.proc);
      });
    }
  });
}

void writeMethod(JsonWriter& json, const Name& name, Procs procs) {
  json.object([&] {
    json.key("name").value(name);
    json.key("procs").array([&] {
      for (const ProcRow& proc : procs) writeProc(json, proc);
    });
  });
}

void writeInterfaces(JsonWriter& json, Procs all) {
  json.key("interfaces").array([&] {
    forEachGroup(all, &ProcRow::interfaceName, [&](const Name& name, Procs ofInterface) {
      json.object([&] {
        json.key("name").value(name);
        json.key("methods").array([&] {
          forEachGroup(ofInterface, &ProcRow::methodName,
                       [&](const Name& method, Procs procs) { writeMethod(json, method, procs); });
        });
      });
    });
  });
}

void writeCounters(JsonWriter& json, const std::vector<CounterRow>& counters) {
  json.key("counters").array([&] {
    for (const CounterRow& counter : counters) {
      json.object([&] {
        json.key("name").value(std::string_view(counter.name));
        json.key("total").value(counter.total);
        json.key("criticality").value(counter.criticality);
      });
    }
  });
}

void writeObjects(JsonWriter& json, const std::vector<ObjectRow>& objects) {
  json.key("objects").array([&] {
    for (const ObjectRow& object : objects) {
      json.object([&] {
        json.key("kind").value(std::string_view(object.kind));
        json.key("live").value(object.live);
        json.key("kept").value(object.kept);
      });
    }
  });
}

void writeAtoms(JsonWriter& json, const std::vector<AtomRow>& atoms) {
  json.key("atoms").array([&] {
    for (const AtomRow& atom : atoms) {
      json.object([&] {
        json.key("text").value(std::string_view(atom.text));
        json.key("references").value(atom.references);
      });
    }
  });
}

}  // namespace

std::string asJson(const Report& report) {
  JsonWriter json;
  json.object([&] {
    json.key("schema").value(kJsonSchema);
    json.key("library").object([&] {
      json.key("version").value(std::string_view(report.version));
      json.key("file").value(std::string_view(report.file));
      json.key("changeCounter").value(report.changeCounter);
    });
    writeModules(json, report.modules);
    writeInterfaces(json, report.procs);
    writeMissing(json, report.missing);
    writeCounters(json, report.counters);
    writeObjects(json, report.objects);
    if (report.atoms) writeAtoms(json, *report.atoms);
  });
  return json.text();
}

}  // namespace zebinfo
