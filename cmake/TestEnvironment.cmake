# Run by ctest before its tests. Warm interpreters outlive the commands that start them, so tests
# begin without; those of warm interpreters switch them on in data roots of their own.
set(ENV{RASTREL_WARM} 0)
