#pragma once
// Runs programs as an ordinary user (nobody, without groups), for the cases
// in which root would get past what a user meets.
#include <string>
#include <vector>

std::vector<std::string> asOrdinaryUser(const std::vector<std::string>& command);

// ravlin-host run by an ordinary user: a copy of it, with the add-in it loads
// beside it, in a folder anyone may enter, because the build tree may lie
// under one only root can enter (a folder from mktemp, a home folder).
std::vector<std::string> ravlinHostAsOrdinaryUser(const std::string& tool, const std::vector<std::string>& args);
