// Whether what a state file holds makes sense as a whole: what its parts say of each other, beyond
// what each says of itself (which its own reading checks). A checksum finds what was changed by
// chance; this finds what was changed and given a new checksum, or never had one.
#pragma once

struct ComponentFile;

namespace MCModelFiles {

// The dictionary speaks of the variables of its component, and has a value for every category that
// was counted; a model's estimates are those of its counts.
bool MakesSense(const ComponentFile& file);

}  // namespace MCModelFiles
