// Reports to the program that started the service when clients can use it.
#ifndef PROREFLAX_SERVICE_READY_NOTICE_H
#define PROREFLAX_SERVICE_READY_NOTICE_H

namespace proreflax {

/// Sends "READY=1" to the datagram socket in the environment variable NOTIFY_SOCKET: a path, or "@"
/// and a name in the abstract namespace. Does nothing without the variable. Never blocks.
void send_ready_notice();

}  // namespace proreflax

#endif
