#pragma once

/// Marks what the Core library exports to the host, the tools and the plug-ins. Everything else stays hidden.
#define KALVENTO_API __attribute__((visibility("default")))
