// The message catalogue: templates and symbolic names of error codes, read from qnumerr.bin.
#pragma once

namespace qnum::catalogue {

// The message template of `code`; without a readable catalogue a generic text. The text
// lives in a per-thread buffer until the next lookup.
const char* message_template(long code);
// The symbolic name of `code` (QNUM_...); without a catalogue the code in decimal.
const char* code_name(long code);

// For tests: how many records were read from the file in this process, the load state
// (0 not tried, 1 failed, 2 loaded) and the byte-swap flag.
long records_read();
int load_state();
bool byte_swapped();

}  // namespace qnum::catalogue
