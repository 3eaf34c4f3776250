#include "tools/gridkit/read/finish_output.h"

#include "gridkit/error.h"
#include "tools/gridkit/read/output_file.h"
#include "tools/gridkit/terminal/interruption.h"
#include "tools/gridkit/terminal/terminal.h"

void finish_output(gridkit::RasterWriter& writer, Progress& progress, const std::string& output,
                   const ImagePlace& place, const std::vector<UnreadLines>& missing) {
  for (const auto& [reason, lines, key] : missing) writer.add_metadata(key, lines);
  try {
    writer.finish();
  } catch (const gridkit::Error&) {
    stop_if_interrupted();  // giving up the second pass is no fault of the file
    throw;
  }
  progress.clear();
  warn_about_place(place, shown_name(output));
  for (const auto& [reason, lines, key] : missing) {
    std::string remark = shown_name(output);
    remark.append(": lines of the image ").append(reason);
    remark.append(", in part or in whole: ").append(lines);
    warn(remark);
  }
}
