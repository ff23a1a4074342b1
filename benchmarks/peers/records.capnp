# The measured records for Cap'n Proto. Texts are Data: the records fix no encoding, and need no terminator.
@0x9d3f1a7c52e8b604;

using Cxx = import "/capnp/c++.capnp";
$Cxx.namespace("bench::capn");

struct Credentials { userName @0 :Data; password @1 :Data; }
struct Proxy { address @0 :Data; port @1 :UInt16; credentials @2 :Credentials; }
struct Ssl { field1 @0 :UInt16; field2 @1 :Data; field3 @2 :Data; field4 @3 :Data; field5 @4 :Data; }
struct Timeouts { field1 @0 :UInt64; field2 @1 :UInt64; }
struct Server { address @0 :Data; proxy @1 :Proxy; ssl @2 :Ssl; timeouts @3 :Timeouts; }

struct Pair { field1 @0 :Data; field2 @1 :Data; }
struct Product {
    field1 @0 :Data; field2 @1 :Data; field3 @2 :UInt64; field4 @3 :Data; field5 @4 :Data;
    items @5 :List(Pair); hsdpField1 @6 :UInt32; statuses @7 :List(Pair); field6 @8 :UInt32;
}
struct Key {
    field1 @0 :UInt32; field2 @1 :UInt32; field3 @2 :UInt32; hasField4 @3 :Bool; field4 @4 :Int64;
    hasField5 @5 :Bool; field5 @6 :Int64; field6 @7 :UInt32; field7 @8 :UInt32; field8 @9 :Data;
}
struct Device {
    field1 @0 :Data; field2 @1 :Data; field3 @2 :UInt32; field4 @3 :UInt32; field5 @4 :UInt32; field6 @5 :Data;
    field7 @6 :Data; field8 @7 :UInt64; field9 @8 :Data; field10 @9 :Data; field11 @10 :Data; field12 @11 :Data;
    field13 @12 :Data; field14 @13 :Data; field15 @14 :Data;
}
struct App { product @0 :Product; keyInfo1 @1 :Key; keyInfo2 @2 :Key; device @3 :Device; }

struct Chunk { fileName @0 :Data; chunkOffset @1 :UInt64; chunkSize @2 :UInt64; data @3 :Data; }

struct Parameter { name @0 :Data; value @1 :Data; }
struct Parameters { params @0 :List(Parameter); }
