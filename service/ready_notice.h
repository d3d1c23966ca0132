// Whoever started the service may want to know when programs can ask.
#ifndef PROREFLAX_SERVICE_READY_NOTICE_H
#define PROREFLAX_SERVICE_READY_NOTICE_H

namespace proreflax {

/// Sends "READY=1" to the datagram socket that the environment variable NOTIFY_SOCKET names: a
/// path, or a name in the abstract namespace behind an "@". Does nothing without the variable,
/// and waits for nobody.
void send_ready_notice();

}  // namespace proreflax

#endif
