#pragma once

// Compact for the wire; pretty for files that people read.
enum class JSONLayout { compact, pretty };
