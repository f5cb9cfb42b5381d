#ifndef ZORV2_LBX_TOOLS_MODDING_FORMKINDS_H
#define ZORV2_LBX_TOOLS_MODDING_FORMKINDS_H

#include "tools/modding/Forms.h"

// The forms of each kind, behind Forms.h. Each unpacking function throws
// when the entry has no editable form; the entry is then kept as bytes.
namespace lbxtool {
namespace forms {

EntryForm graphic(Content::Graphic* graphic, const UnpackPlace& place);
std::unique_ptr<Content> graphicFrom(const Json& manifest, const PackPlace& place);

EntryForm cursor(Content::Cursor* cursor, const UnpackPlace& place);
std::unique_ptr<Content> cursorFrom(const Json& manifest, const PackPlace& place);

// Runs a library create; its failure names the entry in the manifest.
std::unique_ptr<Content> created(const PackPlace& place, const std::function<Content*()>& create);

} // namespace forms
} // namespace lbxtool

#endif
