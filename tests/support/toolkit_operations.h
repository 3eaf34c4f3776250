#pragma once

#include <algorithm>
#include <array>
#include <cstdio>
#include <memory>
#include <set>
#include <stdexcept>
#include <string>
#include <string_view>

// The operations of the host that the plug-in calls, and how each of them can fail.
struct ToolkitOperation {
  std::string_view name;
  std::string_view why_never;  // empty for one that can fail; else why there is nothing to inject
};

inline constexpr std::string_view gives_nothing = "gives no result, and takes no slot";
inline constexpr std::string_view any_answer = "every answer is a valid one";

inline constexpr std::array toolkit_operations = {
    ToolkitOperation{"DisableThreadLibraryCalls", "called at load; its answer is not looked at"},
    ToolkitOperation{"OutputDebugStringA", gives_nothing},
    ToolkitOperation{"gkd_ConvertToMIF", ""},
    ToolkitOperation{"gkd_DesignCreate", ""},
    ToolkitOperation{"gkd_DesignDestroy", gives_nothing},
    ToolkitOperation{"gkd_DictionaryAddDesign", ""},
    ToolkitOperation{"gkd_DictionaryCreate", ""},
    ToolkitOperation{"gkd_DictionaryEncodeToString", ""},
    ToolkitOperation{"gkd_ObjectSize", ""},
    ToolkitOperation{"gke_CreateErrorReport", "gives a report even without memory"},
    ToolkitOperation{"gke_DeleteErrorReportEx", gives_nothing},
    ToolkitOperation{"gke_PrintErrorReport", gives_nothing},
    ToolkitOperation{"gkf_Close", ""},
    ToolkitOperation{"gkf_Fgets", ""},
    ToolkitOperation{"gkf_FileExists", ""},
    ToolkitOperation{"gkf_Open", ""},
    ToolkitOperation{"gkf_fclose", ""},
    ToolkitOperation{"gkf_feof", ""},
    ToolkitOperation{"gkf_fopen", ""},
    ToolkitOperation{"gkf_fread", ""},
    ToolkitOperation{"gkf_fseeko", ""},
    ToolkitOperation{"gki_GetInit", ""},
    ToolkitOperation{"gkj_MapInfoFree", gives_nothing},
    ToolkitOperation{"gkj_MapProjectionCSRGet", ""},
    ToolkitOperation{"gkj_ProjectionConvertFromMIF", ""},
    ToolkitOperation{"gkj_ProjectionConvertToMIF", ""},
    ToolkitOperation{"gkj_ProjectionFree", gives_nothing},
    ToolkitOperation{"gkl_LayerClose", ""},
    ToolkitOperation{"gkl_LayerGetNames", ""},
    ToolkitOperation{"gkl_LayerMapProjectionRead", ""},
    ToolkitOperation{"gkl_LayerOpen", ""},
    ToolkitOperation{"gkl_LayerRead", ""},
    ToolkitOperation{"gkl_MapInfoRead", ""},
    ToolkitOperation{"gkl_PixelRectCreate", ""},
    ToolkitOperation{"gkl_PixelRectDelete", ""},
    ToolkitOperation{"gkm_HeapFree", gives_nothing},
    ToolkitOperation{"gkm_HeapMalloc", ""},
    ToolkitOperation{"gkm_MemCpy", gives_nothing},
    ToolkitOperation{"gkm_MemDup", ""},
    ToolkitOperation{"gkp_GetNumberPreference", ""},
    ToolkitOperation{"gks_Duplicate", ""},
    ToolkitOperation{"gks_Eqnic", ""},
    ToolkitOperation{"gks_GetPathPart", gives_nothing},
    ToolkitOperation{"gks_REComp", ""},
    ToolkitOperation{"gks_REExec", ""},
    ToolkitOperation{"gks_Sprintf", ""},
    ToolkitOperation{"gks_StringListAppend", ""},
    ToolkitOperation{"gks_StringListDelete", ""},
    ToolkitOperation{"gks_SubString", ""},
    ToolkitOperation{"gkt_Text_atol", any_answer},
    ToolkitOperation{"gkt_Text_strcmp", any_answer},
    ToolkitOperation{"gkt_Text_strlen", any_answer},
    ToolkitOperation{"gkt_Text_strrchr", "asked only for a character that the text holds"},
    ToolkitOperation{"pool_AddFileHandleToList", ""},
    ToolkitOperation{"pool_FindFileHandleIfOpen", ""},
    ToolkitOperation{"pool_RemoveFileHandleFromList", gives_nothing},
    ToolkitOperation{"rmdl_modelEphemeris", ""},
};

inline std::set<std::string> known_operations() {
  std::set<std::string> names;
  for (const ToolkitOperation& operation : toolkit_operations) names.emplace(operation.name);
  return names;
}

// The names of C functions that a library needs ("undefined-only") or offers ("defined-only").
inline std::set<std::string> dynamic_names(const std::string& library, const std::string& which) {
  const std::string command = "nm -D --" + which + " '" + library + "'";
  const std::unique_ptr<std::FILE, int (*)(std::FILE*)> pipe(::popen(command.c_str(), "r"),
                                                             &::pclose);
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  std::set<std::string> names;
  std::array<char, 4096> line{};
  while (std::fgets(line.data(), line.size(), pipe.get()) != nullptr) {
    const std::string text = line.data();
    const std::string name = text.substr(text.rfind(' ') + 1);
    if (name[0] != '_') names.insert(name.substr(0, name.find_first_of("@\n")));
  }
  return names;
}

// What a plug-in's binary asks of the host's library.
inline std::set<std::string> operations_called_by(const std::string& plugin,
                                                  const std::string& host) {
  const std::set<std::string> offered = dynamic_names(host, "defined-only");
  std::set<std::string> names;
  for (const std::string& name : dynamic_names(plugin, "undefined-only")) {
    if (offered.contains(name)) names.insert(name);
  }
  return names;
}
