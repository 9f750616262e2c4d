#pragma once

#include <string>

/// What --help prints: the most used options on one screen for an empty `group`, the options of a
/// group with their whole text, or all of them. Empty for an unknown group.
std::string HelpText(const std::string& group);

/// The manual page as troff.
std::string ManualPage();

/// A bash script that completes the options.
std::string BashCompletion();
