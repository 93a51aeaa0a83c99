// `trov encode`: JSON packet objects in, packets out.
#pragma once

#include <ostream>
#include <string>

#include "RecordJson.h"

namespace trov {

// Why a packet object from `trov decode` has nothing to encode (its body was
// skipped or failed, or it stands for trailing bytes); empty when it has.
std::string undecodedReason(const Json &packet);

// Reads packet objects (one, an array, or one per line) from `path` ("-":
// standard input) and writes each packet as hex text, or raw bytes when
// `raw`. Returns the exit code: 0, or 2 after an error naming the JSON path.
int runEncode(const std::string &path, bool raw, std::ostream &out, std::ostream &err);

// As runEncode, over JSON text already read; `name` names the input in
// messages.
int encodeJsonText(const std::string &text, const std::string &name, bool raw, std::ostream &out,
                   std::ostream &err);

} // namespace trov
