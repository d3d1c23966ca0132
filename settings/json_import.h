// A JSON text of export, read back.
#ifndef PROREFLAX_SETTINGS_JSON_IMPORT_H
#define PROREFLAX_SETTINGS_JSON_IMPORT_H

#include <string>
#include <vector>

#include "settings/request.h"

namespace proreflax::settings {

/// A sentence in `failure` when the text is not an object of objects of values. Whole numbers stand
/// for their decimal texts.
std::vector<set_request> read_json_export(const std::string& text, std::string& failure);

}  // namespace proreflax::settings

#endif
