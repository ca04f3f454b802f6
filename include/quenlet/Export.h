#pragma once

// Marks what the shared library exports.
#define QUENLET_API __attribute__((visibility("default")))
