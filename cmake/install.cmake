# Install rules for the program's shipped files (filled in with the packaging).
