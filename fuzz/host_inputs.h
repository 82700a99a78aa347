// What a fuzzer's input says about the host: its document, script and store, and what goes wrong in it.
#pragma once

#include "fuzz/byte_source.h"
#include "hostkit/fake_host.h"

namespace stairmelt {

// Format, size and selection; no pixels. Served formats count as often as all the others together.
void ReadDocument(FakeDocument& document, ByteSource& bytes);

// A picture where a kernel can see it, and blank samples otherwise.
void ReadPixels(FakeDocument& document, ByteSource& bytes);

// Any keys in any order, the plug-in's own mostly, with any values and sometimes of a type that isn't an integer's.
void ReadScript(FakeScript& script, ByteSource& bytes);
void ReadStored(FakeRegistry& registry, ByteSource& bytes);

// What the host lacks and which calls fail from now on. The parts of the record go when the next run begins.
void ReadFailures(Failures& failures, ByteSource& bytes);

}  // namespace stairmelt
