// The usage text that korfiles prints after a bad command line and at the head of its help, as the tests
// expect it word for word. The one place the tests hold it.
#pragma once

#include <string>

inline const std::string KORFILES_USAGE =
    "Usage: korfiles [--sort=path|result] [--descending] [FILE]\n"
    "       korfiles --listing[=FILE] [--no-stubs] [--skip=info,warning,error] [--sort=path|result]\n"
    "                [--descending]\n"
    "       korfiles search [PATTERN] [--store=FILE] [--from=DATE] [--to=DATE] [--exclude=STATES]\n"
    "                [--sort=path|status|security|streams] [--descending] [--latest-only]\n"
    "                [--retrieval-order]\n"
    "       korfiles settings [--registry=STORE] [set NAME VALUE | mru add PATH | mru remove PATH]\n";
