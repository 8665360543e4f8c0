#pragma once
// Keeps the servers a test program starts private to its run, so that a
// second run of the suite on the same machine can never reach them, nor this
// run reach its servers. The program re-executes itself in new mount and
// network namespaces (as a mapped root for an ordinary user) and mounts a
// tmpfs of its own on /tmp/.X11-unix: an X server listens on an abstract
// socket, which the network namespace scopes, and on a file there. A display
// number a stopped server gave up may then be taken by another run's server,
// but that server cannot be reached from here.
void enterPrivateRun(int argc, char** argv);
