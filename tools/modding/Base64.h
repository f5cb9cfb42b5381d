#ifndef ZORV2_LBX_TOOLS_MODDING_BASE64_H
#define ZORV2_LBX_TOOLS_MODDING_BASE64_H

#include <string>

namespace lbxtool {

// Bytes as base64 text (the standard alphabet, padded with '='), so that a
// JSON file can carry them and any language can read them back.
std::string toBase64(const std::string& bytes);

// The bytes of base64 text; false, with `bytes` unspecified, when the text
// is not padded base64 of the standard alphabet.
bool fromBase64(const std::string& text, std::string& bytes);

} // namespace lbxtool

#endif
