// Here for the headers that are compiled before all tests; the build needs a source to compile them for.
