#pragma once

#include <string>

// The wire as JSON Schema 2020-12, made from the field lists and tables of names that encode and decode the records.
// The request's schema accepts what the daemon reads, the envelope's just what it writes.

std::string requestSchema();
std::string envelopeSchema();
