#pragma once
#include "orvptp/iPTPTimekeeper.h"

#include <netinet/in.h>
#include <sys/types.h>
#include <time.h>

namespace nZelmarPtpPlugin_1_0
{

// Linux's own timestamps of datagrams: taken by the kernel as a datagram
// enters the stack from the device (receive) and as the device's driver takes
// it (transmit). They sit closer to the wire than any reading in user space,
// and do not move with how late a thread wakes or how long a system call
// takes. They count the system's UTC clock (CLOCK_REALTIME);
// toTimekeeperTime carries them into the timekeeper's time.
//
// Every OS failure goes to the trace with the system's reason.
namespace nKernelTimestamps
{

// Asks the kernel to stamp each datagram that arrives on the socket.
bool enableReceive(int a_socket);

// Lets the socket report transmit timestamps, when the driver of the device
// named a_pDevice takes them; sendStamped then asks for them.
bool enableTransmit(int a_socket, const char* a_pDevice);

// One datagram into a_pBuffer, without waiting; the result is recv's. When
// the kernel stamped it, a_rStamped is true and a_rStamp holds the stamp.
ssize_t receive(int a_socket, u8* a_pBuffer, u32 a_size, timespec& a_rStamp, bool& a_rStamped);

// sendto, asking for the transmit timestamp of this one datagram.
ssize_t sendStamped(int a_socket, const u8* a_pData, u32 a_length,
                    const sockaddr_in& a_destination);

// Waits at most a_waitMs for the transmit timestamp of the datagram that
// carried a_pData. A stamp is known by the datagram it comes back with; the
// stamps of earlier datagrams, which came after their own wait had ended, are
// passed over and dropped. False when none came in time.
bool awaitTransmit(int a_socket, const u8* a_pData, u32 a_length, u32 a_waitMs, timespec& a_rStamp);

// A kernel stamp in the timekeeper's time: the system clock and the
// timekeeper are read back to back (system, timekeeper, system), and their
// difference is added to the stamp. The timekeeper's own rate over the short
// span since the stamp does not enter. False when a clock cannot be read; a
// failing timekeeper leaves its code in a_status.
bool toTimekeeperTime(const timespec& a_stamp, nOrvPTP000::iPTPTimekeeper& a_rTimekeeper,
                      nOrvPTP000::tTimestamp& a_rTime, nOrvTarn000::tStatus& a_status);

// The trace lines of the messaging's choice at open, and of a transmit
// timestamp that did not come.
void traceChoice(const char* a_pDevice, bool a_kernelReceive, bool a_kernelTransmit);
void traceMissingTransmit(u32 a_waitMs);

} // namespace nKernelTimestamps
} // namespace nZelmarPtpPlugin_1_0
