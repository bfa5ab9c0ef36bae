// The closing pause of the console test: the command interpreter's "pause", run only when a
// person can answer it (standard input is a console or terminal), so that agents, scripts and
// tests never wait for a key.
#pragma once

namespace specific::oracle {

void console_pause();

}  // namespace specific::oracle
