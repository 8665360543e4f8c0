// Entry points the host looks up by name.
