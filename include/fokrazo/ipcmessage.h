/// The messages between the library and the daemon.
///
/// A message is a sequence of BER elements. The first is the header: a SEQUENCE of two INTEGERs, opcode and
/// result, with a length field of four bytes. The fields of the body follow the header. Fields have no names
/// or types; they are read in the order in which they were written. On the socket each message is preceded by
/// its length: 4 bytes in host byte order.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include <fokrazo/export.h>
#include <fokrazo/ipc_opcode.h>

/// Of lber.h.
typedef struct berelement BerElement;
struct berval;

namespace vesk {

class ADObject;
class ADObjectList;
class ADSerializer;
class Guid;
class IPCException;
class ReceivedText;
class SID;
struct CallProgress;

/// One message, to be written or received. If writing a field throws, nothing is rolled back: do not send
/// that message. A field that cannot be read, whatever the peer sent, is an IOException.
/// Thread-safety: one thread at a time.
class FOKRAZO_API IPCMessage {
 public:
  /// An empty message, to be received, or to be written. Its first field fixes opcode and result.
  IPCMessage() = default;
  virtual ~IPCMessage();
  IPCMessage(const IPCMessage&) = delete;
  IPCMessage& operator=(const IPCMessage&) = delete;

  /// The contents of the header.
  IPC_OPCODE opcode() const { return m_opcode; }
  IPC_RESULT result() const { return m_result; }
  /// Set before the header is written, which happens with the first field or when the message is sent.
  void setOpcode(IPC_OPCODE opcode) { m_opcode = opcode; }
  void setResult(IPC_RESULT result) { m_result = result; }

  /// Writes the header if there is no element yet; returns the element, owned by the message.
  /// @throws SystemException "ber alloc", "ber_printf"
  BerElement* doHeader();

  // Each of these appends one field, or a count and as many fields, and returns the message. Fields added
  // after the first send are not sent. @throws IOException

  /// INTEGER. Also for every bool and enumeration.
  IPCMessage& operator+=(int value);
  /// OCTET STRING of the 8 bytes in the host's order.
  IPCMessage& operator+=(long long value);
  /// OCTET STRING, without terminator.
  IPCMessage& operator+=(const std::string& text);
  /// SEQUENCE of OCTET STRINGs. The array ends with null; a null array is an empty one.
  IPCMessage& operator+=(const char** texts);
  /// INTEGER count, then one OCTET STRING each.
  IPCMessage& operator+=(const std::vector<std::string>& texts);
  /// INTEGER and OCTET STRING, see <fokrazo/ipc_exception.h>.
  IPCMessage& operator+=(IPCException& exception);
  /// OCTET STRING of the binary form. @throws BadDataException "SID is Null"
  IPCMessage& operator+=(const SID& sid);
  /// OCTET STRING of 16 bytes.
  IPCMessage& operator+=(const Guid& guid);
  /// OCTET STRING of the blob (<fokrazo/adserializer.h>).
  IPCMessage& operator+=(ADSerializer* serializer);
  /// OCTET STRING of the object's blob, of no bytes for a null or an empty object.
  IPCMessage& operator+=(ADObject& object);
  /// INTEGER count, then the blob of each. @throws SystemException a null object in the list
  IPCMessage& operator+=(ADObjectList& objects);

  // Each of these reads a field that the operator for the same type wrote. @throws IOException

  int getInt() const;
  /// The first machine word of an OCTET STRING; missing bytes are 0.
  unsigned long getPthreadT() const;
  /// The message's own copy of the text is wiped.
  std::string getString() const;
  /// The caller frees it with ber_bvfree.
  berval* getBerString() const;
  /// Null for no strings; the caller frees it with ber_memvfree.
  char** getCharStringArray() const;
  /// Empty if the count is below 1.
  std::vector<std::string> getStringVector() const;
  /// As long as its own count says; missing bytes are 0, and no bytes make a null SID.
  SID getSid() const;
  /// 16 bytes; missing ones are 0.
  Guid getGuid() const;
  /// A null handle for an OCTET STRING of no bytes. The object is read completely and does not refer to the
  /// message. @throws BadDataException the blob cannot be read
  ADObject getADObject() const;
  /// Never a null list; may contain null handles. Empty for a count below 1.
  ADObjectList getADObjectList() const;
  /// Reads an exception and throws it. @throws IOException there is no exception to read
  [[noreturn]] void getAndThrowIPCException() const;

  /// Whether there is another field to read.
  bool hasMore() const;
  /// Returns to the first body field, to read what was written or to read it again.
  /// @throws IOException there is no header
  void rewind() const;

  /// "(unknown)" for any number that is not listed. Constant storage.
  static const char* IPC_OPCODEToStr(IPC_OPCODE opcode);
  static const char* IPC_RESULTToStr(IPC_RESULT result);

  /// Sends the message as one frame; later calls send the same bytes. Blocks for at most `lrpc.timeout`
  /// seconds in each step.
  /// @throws ConnectionBrokenException, TimeoutException as writeN; IOException "ber flatten"
  void send(int fd);
  /// Receives one frame, which replaces the message's content, and reads its header. Blocks for at most
  /// `lrpc.timeout` seconds in each step. Memory grows with the bytes received, whatever length was
  /// announced.
  /// @throws ConnectionBrokenException, TimeoutException as readN
  /// @throws IOException an empty frame or no header (code 1); a frame that is longer than
  /// `lrpc.message.maxsize` or than memory allows (code ENOMEM; its rest is left unread)
  void get(int fd);

 protected:
  /// Wipes and frees the element with its bytes; the bytes flattened for sending stay.
  void dropElement();

 private:
  friend class LocalRpcSession;

  // send and get. `midExchange` becomes true before the first byte is sent, and false when a whole frame has
  // been received, whatever it holds. `call` sets limits in place of `lrpc.timeout`; it may be null.
  void transmit(int fd, bool& midExchange, CallProgress* call);
  void receive(int fd, bool& midExchange, CallProgress* call);
  void receiveBody(int fd, unsigned int length, CallProgress* call);
  bool makeRoom(size_t size);
  void put(const void* bytes, size_t size, const char* failure);
  void take(ReceivedText& received, const char* failure) const;
  void flatten();
  bool readHeader() const;

  BerElement* m_ber = nullptr;
  berval* m_flattened = nullptr;
  mutable IPC_OPCODE m_opcode = IPC_OP_UNKNOWN;
  mutable IPC_RESULT m_result = IPC_SUCCESS;
};

/// The reply to a request: the client receives it; the daemon writes it.
class FOKRAZO_API IPCReply : public IPCMessage {
 public:
  IPCReply() = default;
  /// For the daemon.
  explicit IPCReply(IPC_OPCODE opcode) { setOpcode(opcode); }

 private:
  friend class IPCRequest;
  friend class LocalRpcSession;

  // @throws SystemException the result in the header is not success; its code is that result
  void requireSuccess() const;
};

/// A request. Its header is already written.
class FOKRAZO_API IPCRequest : public IPCMessage {
 public:
  /// @throws SystemException "ber alloc", "ber_printf"
  explicit IPCRequest(IPC_OPCODE opcode);

  /// Sends the request and receives the reply. @throws what send and get throw
  /// @throws SystemException the reply's result is not success; its code is that result.
  void execute(int fd, IPCReply* reply);

 private:
  [[maybe_unused]] const int m_reserved[3] = {0, -1, -1};  // part of the class layout; unused
};

}  // namespace vesk
