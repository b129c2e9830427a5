// SPDX-License-Identifier: Apache-2.0
#include "Command.h"

int main(int argc, char** argv) { return nearcast::cli::runCommandLine(argc, argv); }
