"""The messages of this folder, chosen by hand. What reading each of them gives is said here, by hand too; model.py
lays the messages out and holds what is said here against its own reading."""

import copy

from model import NULL, RECORDS, UNSET, Case, Message, invalid_argument, out_of_range, out_of_space

CASES = []


def all_cases():
    return CASES


def add(record, name, about, fields, *, message=None, start=0, encode=False, change=None, reads=None, raises=None,
        status="ok", top=None, without=None, read_from_start=None):
    """Lays out `fields`, or takes `message`, lets `change` spoil it, and says what is read: `reads` or else `fields`,
    unless it `raises`. `read_from_start` moves the arena as it is to another address."""
    if message is None:
        message = Message(record, fields, start, limited=encode)
    if change:
        change(message)
    if read_from_start is not None:
        message.start = read_from_start
    message.top = top
    message.without = without or message.without
    expected = None if raises else (fields if reads is None else reads)
    CASES.append(Case(name, about, message, expected, raises, status, encode))


def but(fields, **changed):
    """A copy of the fields in which some are others. `a__b` is the field b within a; a number is an index."""
    result = copy.deepcopy(fields)
    for name, value in changed.items():
        *outer, last = [int(part) if part.isdigit() else part for part in name.split("__")]
        inside = result
        for part in outer:
            inside = inside[part]
        inside[last] = value
    return result


def file_name(path):
    return path.replace("[", "_").replace("]", "").replace(".", "_")


def usual(record, full, minimal, pointers, null_arena, *, aligned=True):
    """What every record with pointers is tried with. `pointers` are in the order in which they are read, each with its
    codec and the size of its elements; those that begin with ">" belong to another record, which has messages of its
    own, and are spoilt in one way only."""
    add(record, "full", "Every member is there, each with content of its own.", full, encode=True)
    add(record, "minimal", "Every member is empty, absent or zero.", minimal, encode=True)
    if aligned:
        add(record, "full_start_5", "The arena begins 5 past a multiple of 8: it is the address that is rounded, so\n"
            "the offsets of arrays and slots are no multiples of their alignment.", full, start=5, encode=True)
        add(record, "unaligned", "Laid out for an aligned arena and received at an odd address: no array or slot is\n"
            "aligned, and all are read.", full, read_from_start=3)
    add(record, "behind_top", "The arena counts as empty: a throwing reader looks at the arena's end, not at its top.",
        full, top=0)
    add(record, "null_arena", "No arena is given. The first member that needs one says so.", minimal,
        without=NULL, raises=invalid_argument(*null_arena))

    listed = [(path.lstrip(">"), codec.split("/")[0], int((codec + "/1").split("/")[1]), path[0] == ">")
              for path, codec in (entry.split(":") for entry in pointers.split())]
    first_codec = listed[0][1]
    add(record, "unset_arena", "The arena has no buffer, its three addresses are null: not even nothing lies in it.",
        minimal, without=UNSET, raises=out_of_range(first_codec, 0))

    in_wire = {cell.path for cell in Message(record, minimal).wire if cell.meaning == "pointer"}
    def all_at_end(message):
        message.append(b"spare bytes", "of no field")
        for path in sorted(in_wire):
            message.point(path, message.size, 0)
    add(record, "empty_at_end", "Every pointer has size 0 and the arena's size as its offset, the last that is inside.",
        minimal, change=all_at_end)

    base = Message(record, full)
    for path, codec, element, foreign in listed:
        offset, size = base.pointer(path)
        assert size > 0 and size % element == 0, (record, path)

        def spoilt(what, about, new_offset, new_size):
            add(record, f"{file_name(path)}_{what}", f"{path}: {about}", full, raises=out_of_range(codec, new_offset),
                change=lambda message: message.point(path, new_offset, new_size))

        spoilt("outside", "begins behind the arena's end.", base.size + 16, size)
        if foreign:
            continue
        spoilt("one_past_end", "lies inside but for its last byte.", base.size - size + 1, size)
        spoilt("empty_beyond_end", "has no bytes, but its offset is one too large all the same.", base.size + 1, 0)
        spoilt("offset_ffffffff", "has the largest offset, which 32-bit arithmetic would wrap round.", 0xFFFFFFFF, size)
        spoilt("size_ffffffff", "has the largest size of whole elements, which 32-bit arithmetic would wrap round.",
               offset, 0xFFFFFFFF // element * element)
        if element > 1:
            spoilt("half_an_element", "ends inside its first element.", offset, element // 2)
            spoilt("ragged", "ends inside the element after its last.", offset, size + 4)

    for (first, codec, _, _), (second, *_) in zip(listed, listed[1:]):
        def both(message):
            message.point(first, message.size + 100)
            message.point(second, message.size + 200)
        add(record, f"{file_name(first)}_and_{file_name(second)}_outside",
            f"{first} and {second} both begin behind the arena's end; {first} is read first.",
            full, change=both, raises=out_of_range(codec, base.size + 100))


def several(path, times):
    """Makes the pointer cover `times` elements, of which the further ones are bytes that nobody looks at."""
    def change(message):
        offset, size = message.pointer(path)
        message.append(b"\xee" * max(0, offset + times * size - message.size), "behind the first element")
        message.point(path, size=times * size)
    return change


def overlapping(*sizes):
    """Makes each of the pointers refer to the arena's first bytes, to as many as given."""
    def change(message):
        for path, size in sizes:
            message.point(path, 0, size)
    return change


# --- How to reach the server ---

CREDENTIALS = {"userName": "alice", "password": "s3cret"}
NO_CREDENTIALS = {"userName": "", "password": ""}
usual("Credentials", CREDENTIALS, NO_CREDENTIALS, "userName:string password:string", ("zt_string", 39), aligned=False)
add("Credentials", "at_limit", "Both strings are as long as they may be written.",
    {"userName": "u" * 128, "password": "p" * 128}, encode=True)
add("Credentials", "over_limit", "Strings of any length are read, also those that no writer of ours writes.",
    {"userName": "u" * 129, "password": "p" * 200})
add("Credentials", "any_bytes", "Strings are bytes: zero bytes stay, in the middle and at the end, and so does what\n"
    "is no text in any encoding.", {"userName": b"a\0b\0", "password": b'\xff\xfe\x80"\\\x7f'}, encode=True)
add("Credentials", "only_password", "An empty string takes no bytes; its offset is where it would have begun.",
    {"userName": "", "password": "s3cret"}, encode=True)
add("Credentials", "only_user_name", "An empty string takes no bytes; its offset is where it would have begun.",
    {"userName": "alice", "password": ""}, encode=True)
add("Credentials", "overlapping", "The password is bytes of the user name.", CREDENTIALS,
    change=overlapping(("password", 3)), reads={"userName": "alice", "password": "ali"})
add("Credentials", "crossed", "Each pointer leads to the other's bytes; their order is the writer's affair.",
    CREDENTIALS, reads={"userName": "s3cret", "password": "alice"},
    change=lambda m: (m.point("userName", 5, 6), m.point("password", 0, 5)))

PROXY = {"address": "proxy.local", "port": 8080, "credentials": {"userName": "bob", "password": "hunter2"}}
NO_PROXY = {"address": "", "port": 0, "credentials": NO_CREDENTIALS}
usual("ProxySettings", PROXY, NO_PROXY,
      "address:string >credentials.userName:string >credentials.password:string", ("zt_string", 39), aligned=False)
add("ProxySettings", "at_limit", "Every string is as long as it may be written, and the port as large as it can be.",
    {"address": "a" * 128, "port": 65535, "credentials": {"userName": "u" * 128, "password": "p" * 128}}, encode=True)
add("ProxySettings", "over_limit", "Strings of any length are read.",
    {"address": "a" * 129, "port": 1, "credentials": {"userName": "u" * 129, "password": "p" * 129}})
add("ProxySettings", "overlapping", "All strings begin with the arena's first byte.", PROXY,
    change=overlapping(("credentials.userName", 5), ("credentials.password", 1)),
    reads=but(PROXY, credentials={"userName": "proxy", "password": "p"}))

SSL = {"field1": 771, "field2": "second", "field3": "the third", "field4": "4th", "field5": "number five"}
NO_SSL = {"field1": 0, "field2": "", "field3": "", "field4": "", "field5": ""}
usual("SslSettings", SSL, NO_SSL, "field2:string field3:string field4:string field5:string", ("zt_string", 39),
      aligned=False)
add("SslSettings", "at_limit", "Every string is as long as it may be written, and the number as large as it can be.",
    {"field1": 65535, "field2": "b" * 128, "field3": "c" * 128, "field4": "d" * 128, "field5": "e" * 128}, encode=True)
add("SslSettings", "over_limit", "Strings of any length are read.",
    {"field1": 1, "field2": "b" * 129, "field3": "c" * 129, "field4": "d" * 129, "field5": "e" * 129})
add("SslSettings", "overlapping", "All strings begin with the arena's first byte.", SSL,
    change=overlapping(("field3", 1), ("field4", 8), ("field5", 3)),
    reads=but(SSL, field3="s", field4="secondth", field5="sec"))

TIMEOUTS = {"field1": 30000, "field2": 0x0102030405060708}
add("VynRequestsTimeouts", "full", "The wire structure is the record's own bytes; no arena is needed.", TIMEOUTS,
    without=NULL, encode=True)
add("VynRequestsTimeouts", "minimal", "All zero.", {"field1": 0, "field2": 0}, without=NULL, encode=True)
add("VynRequestsTimeouts", "largest", "All bits set.", {"field1": 2**64 - 1, "field2": 2**64 - 1}, encode=True)
add("VynRequestsTimeouts", "unset_arena", "The arena is not looked at.", TIMEOUTS, without=UNSET)

SERVER = {"address": "vyn.example", "proxy": PROXY, "ssl": SSL, "timeouts": TIMEOUTS}
NO_SERVER = {"address": "", "proxy": None, "ssl": None, "timeouts": None}
usual("ServerConnectionParameters", SERVER, NO_SERVER,
      "address:string proxy:optional/28 >proxy.address:string >proxy.credentials.userName:string "
      ">proxy.credentials.password:string ssl:optional/36 >ssl.field2:string >ssl.field3:string >ssl.field4:string "
      ">ssl.field5:string timeouts:optional/16", ("zt_string", 39))
add("ServerConnectionParameters", "only_address", "Absent members are null pointers and take nothing of the arena.",
    but(NO_SERVER, address="vyn.example"), encode=True)
add("ServerConnectionParameters", "only_proxy", "After 3 bytes of address the proxy's slot begins at 4.",
    but(NO_SERVER, address="vyn", proxy=PROXY), encode=True)
add("ServerConnectionParameters", "only_ssl", "The slot of the TLS settings needs a multiple of 4.",
    but(NO_SERVER, address="v", ssl=SSL), encode=True)
add("ServerConnectionParameters", "only_timeouts", "The slot of the timeouts needs a multiple of 8, for its\n"
    "numbers of 64 bits.", but(NO_SERVER, address="vyn.e", timeouts=TIMEOUTS), encode=True)
add("ServerConnectionParameters", "only_timeouts_start_4", "The arena begins 4 past a multiple of 8.",
    but(NO_SERVER, address="vyn.e", timeouts=TIMEOUTS), start=4, encode=True)
add("ServerConnectionParameters", "empty_members", "Members that are present and empty have slots.",
    {"address": "", "proxy": NO_PROXY, "ssl": NO_SSL, "timeouts": {"field1": 0, "field2": 0}}, encode=True)
add("ServerConnectionParameters", "at_limit", "The address is as long as it may be written.",
    but(NO_SERVER, address="a" * 128), encode=True)
add("ServerConnectionParameters", "over_limit", "Strings of any length are read.",
    but(SERVER, address="a" * 129, proxy__address="p" * 129, ssl__field5="e" * 129))
add("ServerConnectionParameters", "two_proxies", "Of a slot with two elements the first is read.", SERVER,
    change=several("proxy", 2))
add("ServerConnectionParameters", "two_ssl", "Of a slot with two elements the first is read.", SERVER,
    change=several("ssl", 2))
add("ServerConnectionParameters", "two_timeouts", "Of a slot with two elements the first is read.", SERVER,
    change=several("timeouts", 2))
add("ServerConnectionParameters", "overlapping", "The timeouts are the first sixteen bytes of the address.",
    but(NO_SERVER, address="0123456789abcdef"), change=lambda m: m.point("timeouts", 0, 16),
    reads=but(NO_SERVER, address="0123456789abcdef",
              timeouts={"field1": 0x3736353433323130, "field2": 0x6665646362613938}))

CONNECTION = {"serverParameters": SERVER, "credentials": CREDENTIALS}
usual("VynConnectionParameters", CONNECTION, {"serverParameters": NO_SERVER, "credentials": NO_CREDENTIALS},
      ">serverParameters.address:string >serverParameters.proxy:optional/28 >serverParameters.ssl:optional/36 "
      ">serverParameters.timeouts:optional/16 >credentials.userName:string >credentials.password:string",
      ("zt_string", 39))
add("VynConnectionParameters", "overlapping", "The login is bytes of the address.", CONNECTION,
    change=overlapping(("credentials.userName", 3), ("credentials.password", 11)),
    reads=but(CONNECTION, credentials={"userName": "vyn", "password": "vyn.example"}))
add("VynConnectionParameters", "over_limit", "Strings of any length are read.",
    but(CONNECTION, serverParameters__address="a" * 129, credentials={"userName": "u" * 129, "password": "p" * 129}))

for record, number_of_fields in (("VynConnectorSettings", 6), ("VynServerData", 1), ("DynamicAppInfo", 1)):
    names = [f"field{i}" for i in range(1, number_of_fields + 1)]
    add(record, "full", "The wire structure is the record's own bytes; the conversion takes no arena.",
        {name: 0x0102030405060700 + i for i, name in enumerate(names, 1)}, encode=True)
    add(record, "minimal", "All zero.", dict.fromkeys(names, 0), encode=True)
    add(record, "largest", "All bits set.", dict.fromkeys(names, 2**64 - 1), encode=True)

# --- Connector parameters ---

PARAM = {"name": "interval", "value": b"\x10\x27\x00\x00"}
usual("VynParam", PARAM, {"name": "", "value": b""}, "value:blob name:string", ("zt_blob", 32), aligned=False)
add("VynParam", "at_limit", "Name and value are as long as they may be written.",
    {"name": "n" * 128, "value": b"v" * 65536}, encode=True)
add("VynParam", "over_limit", "Names and values of any length are read.", {"name": "n" * 129, "value": b"v" * 65537})
add("VynParam", "every_byte", "Every byte comes back as it is, in the value and in the name.",
    {"name": bytes(range(128)), "value": bytes(range(256))}, encode=True)
add("VynParam", "every_high_byte", "The other half of all bytes, in the name.",
    {"name": bytes(range(128, 256)), "value": b"\0"}, encode=True)
add("VynParam", "zero_value", "Bytes that are zero are no absent value.", {"name": "z", "value": bytes(5)}, encode=True)
add("VynParam", "overlapping", "The value is bytes of the name, and runs on into its own.", PARAM,
    change=lambda m: m.point("value", 6, 4), reads={"name": "interval", "value": b"al\x10\x27"})

PARAMS = {"params": [PARAM, {"name": "mode", "value": b"auto"}, {"name": "mode", "value": b"\0"}]}
usual("VynParams", PARAMS, {"params": []},
      "params:vector/16 >params[0].value:blob >params[0].name:string >params[1].value:blob >params[2].name:string",
      ("zt_vector", 39))
add("VynParams", "empty_elements", "Elements with nothing in them are elements.",
    {"params": [{"name": "", "value": b""}, {"name": "", "value": b""}]}, encode=True)
add("VynParams", "one", "A list of one parameter.", {"params": [PARAM]}, encode=True)
add("VynParams", "forty", "No count is too large: the arena is the limit.",
    {"params": [{"name": f"p{i}", "value": bytes([i])} for i in range(40)]}, encode=True)
add("VynParams", "beyond_64_KiB", "Offsets have 32 bits.",
    {"params": [{"name": "first", "value": b"v" * 65536}, {"name": "second", "value": b"w" * 300}]}, encode=True)
add("VynParams", "overlapping", "Two elements share their bytes.", PARAMS,
    change=lambda m: (m.point("params[1].name", *m.pointer("params[0].name")),
                      m.point("params[2].value", *m.pointer("params[1].value"))),
    reads=but(PARAMS, params__1__name="interval", params__2__value=b"auto"))
add("VynParams", "array_in_itself", "The list's bytes are also an element's value.", {"params": [PARAM]},
    change=lambda m: m.point("params[0].value", 0, 16),
    reads={"params": [{"name": "interval", "value": bytes.fromhex("10000000 08000000 00000000 10000000")}]})

# --- Products ---

UPD_CFG = {"field1": "channel", "field2": "stable"}
NO_UPD_CFG = {"field1": "", "field2": ""}
usual("ProductUpdCfg", UPD_CFG, NO_UPD_CFG, "field1:string field2:string", ("zt_string", 39), aligned=False)
add("ProductUpdCfg", "at_limit", "Both strings are as long as they may be written.",
    {"field1": "a" * 256, "field2": "b" * 256}, encode=True)
add("ProductUpdCfg", "over_limit", "Strings of any length are read.", {"field1": "a" * 257, "field2": "b" * 257})
add("ProductUpdCfg", "overlapping", "The second string is bytes of the first.", UPD_CFG,
    change=overlapping(("field2", 4)), reads={"field1": "channel", "field2": "chan"})

UPD_CFGS = {"items": [UPD_CFG, {"field1": "", "field2": "only the second"}, {"field1": "x", "field2": ""}]}
usual("ProductUpdCfgArray", UPD_CFGS, {"items": []},
      "items:vector/16 >items[0].field1:string >items[0].field2:string >items[1].field2:string", ("zt_vector", 39))
add("ProductUpdCfgArray", "at_limit", "As many entries as may be written.",
    {"items": [{"field1": f"a{i}", "field2": f"b{i}"} for i in range(32)]}, encode=True)
add("ProductUpdCfgArray", "over_limit", "Lists of any length are read.",
    {"items": [{"field1": f"a{i}", "field2": f"b{i}"} for i in range(33)]})
add("ProductUpdCfgArray", "overlapping", "Two entries share their bytes.", UPD_CFGS,
    change=lambda m: m.point("items[2].field2", *m.pointer("items[0].field1")),
    reads=but(UPD_CFGS, items__2__field2="channel"))

STATUS = {"field1": "agent", "field2": "running"}
usual("ProductHsdpStatus", STATUS, {"field1": "", "field2": ""}, "field1:string field2:string", ("zt_string", 39),
      aligned=False)
add("ProductHsdpStatus", "at_limit", "Both strings are as long as they may be written, the first half as long.",
    {"field1": "a" * 128, "field2": "b" * 256}, encode=True)
add("ProductHsdpStatus", "over_limit", "Strings of any length are read.", {"field1": "a" * 200, "field2": "b" * 257})
add("ProductHsdpStatus", "overlapping", "The second string is bytes of the first.", STATUS,
    change=overlapping(("field2", 2)), reads={"field1": "agent", "field2": "ag"})

HSDP = {"field1": 0xA1B2C3D4, "statuses": [STATUS, {"field1": "updater", "field2": "waiting"}]}
usual("ProductHsdpInfo", HSDP, {"field1": 0, "statuses": []},
      "statuses:vector/16 >statuses[0].field1:string >statuses[0].field2:string >statuses[1].field1:string",
      ("zt_vector", 39))
add("ProductHsdpInfo", "at_limit", "As many statuses as may be written, and all bits of the number set.",
    {"field1": 0xFFFFFFFF, "statuses": [{"field1": f"a{i}", "field2": f"b{i}"} for i in range(5)]}, encode=True)
add("ProductHsdpInfo", "over_limit", "Lists of any length are read.",
    {"field1": 1, "statuses": [{"field1": f"a{i}", "field2": f"b{i}"} for i in range(6)]})
add("ProductHsdpInfo", "forty", "Lists of any length are read.",
    {"field1": 1, "statuses": [{"field1": f"a{i}", "field2": ""} for i in range(40)]})
add("ProductHsdpInfo", "overlapping", "Two statuses share their bytes.", HSDP,
    change=lambda m: m.point("statuses[1].field2", *m.pointer("statuses[0].field2")),
    reads=but(HSDP, statuses__1__field2="running"))

PRODUCT = {"field1": "1.2.3", "field2": "build 77", "field3": 0x1112131415161718, "field4": "Endpoint", "field5": "EN",
           "updCfgArray": UPD_CFGS, "hsdpInfo": HSDP, "field6": 0x61626364}
NO_PRODUCT = {"field1": "", "field2": "", "field3": 0, "field4": "", "field5": "", "updCfgArray": {"items": []},
              "hsdpInfo": {"field1": 0, "statuses": []}, "field6": 0}
usual("ProductInfo", PRODUCT, NO_PRODUCT,
      "field1:string field2:string field4:string field5:string >updCfgArray.items:vector/16 "
      ">updCfgArray.items[0].field1:string >hsdpInfo.statuses:vector/16", ("zt_string", 39))
PRODUCT_AT_LIMIT = but(PRODUCT, field1="a" * 32, field2="b" * 32, field3=2**64 - 1, field4="d" * 256, field5="e" * 256,
                       field6=0xFFFFFFFF)
add("ProductInfo", "at_limit", "Every string is as long as it may be written, and every number as large as it can be.",
    PRODUCT_AT_LIMIT, encode=True)
add("ProductInfo", "over_limit", "Strings of any length are read.",
    but(PRODUCT, field1="a" * 33, field2="b" * 33, field4="d" * 257, field5="e" * 257))
add("ProductInfo", "overlapping", "All strings begin with the arena's first byte.", PRODUCT,
    change=overlapping(("field2", 1), ("field4", 3), ("field5", 7)),
    reads=but(PRODUCT, field2="1", field4="1.2", field5="1.2.3bu"))

# --- The device ---

DEVICE_TEXTS = {"field1": 256, "field2": 128, "field6": 128, "field7": 128, "field9": 128, "field10": 256,
                "field11": 128, "field12": 128, "field13": 128, "field15": 128}
DEVICE = {"field1": "host-one", "field2": "two", "field3": 0x33333330, "field4": 0x44444440, "field5": 0x55555550,
          "field6": "six", "field7": "sevens", "field8": 0x8182838485868788, "field9": "nine", "field10": "tenth",
          "field11": "eleven", "field12": "a dozen", "field13": "thirteen", "field14": bytes(range(0xE0, 0xF0)),
          "field15": "fifteen"}
NO_DEVICE = {**dict.fromkeys(DEVICE_TEXTS, ""), **dict.fromkeys(("field3", "field4", "field5", "field8"), 0),
             "field14": bytes(16)}
usual("DeviceInfo", DEVICE, NO_DEVICE, " ".join(f"{name}:string" for name in DEVICE_TEXTS), ("zt_string", 39),
      aligned=False)
LETTERS = dict(zip(DEVICE_TEXTS, "abcdefghij"))
DEVICE_AT_LIMIT = but(DEVICE, field3=0xFFFFFFFF, field4=0xFFFFFFFF, field5=0xFFFFFFFF, field8=2**64 - 1,
                      **{name: LETTERS[name] * limit for name, limit in DEVICE_TEXTS.items()})
add("DeviceInfo", "at_limit", "Every string is as long as it may be written, and every number as large as it can be.",
    DEVICE_AT_LIMIT, encode=True)
add("DeviceInfo", "over_limit", "Strings of any length are read.",
    but(DEVICE, **{name: LETTERS[name] * (limit + 1) for name, limit in DEVICE_TEXTS.items()}))
add("DeviceInfo", "overlapping", "All strings begin with the arena's first byte.", DEVICE,
    change=overlapping(*[(name, i) for i, name in enumerate(DEVICE_TEXTS)][1:]),
    reads=but(DEVICE, **{name: "host-onetw"[:i] for i, name in enumerate(DEVICE_TEXTS) if i}))
add("DeviceInfo", "bytes_with_zeros", "The sixteen bytes are no string: zeros among them stay.",
    but(NO_DEVICE, field14=bytes.fromhex("00 01 00 ff 00 00 7f 80 00 00 00 00 20 00 0a 00")), encode=True)

# --- The licence ---

KEY = {"field1": 0x01010101, "field2": 0x02020202, "field3": 0x03030303, "field4": 1700000000, "field5": -2,
       "field6": 0x06060606, "field7": 0x07070707, "field8": "KEY-0001"}
NO_KEY = {"field1": 0, "field2": 0, "field3": 0, "field4": None, "field5": None, "field6": 0, "field7": 0,
          "field8": None}
usual("LicenseKeyInfo", KEY, NO_KEY,
      "field4:optional/8 field5:optional/8 field8:optional/8 >field8[0]:string", ("zt_optional", 39))
add("LicenseKeyInfo", "only_field4", "One time stamp.", but(NO_KEY, field4=-(2**63)), encode=True)
add("LicenseKeyInfo", "only_field4_start_4", "The slot needs a multiple of 8 and the arena begins 4 past one.",
    but(NO_KEY, field4=4), start=4, encode=True)
add("LicenseKeyInfo", "only_field5", "The other time stamp.", but(NO_KEY, field5=2**63 - 1), encode=True)
add("LicenseKeyInfo", "only_field8", "One string, reached through its slot.", but(NO_KEY, field8="KEY-0001"),
    encode=True)
add("LicenseKeyInfo", "empty_members", "Time stamps of zero and an empty string are present.",
    but(NO_KEY, field4=0, field5=0, field8=""), encode=True)
add("LicenseKeyInfo", "at_limit", "The string is as long as it may be written, and every number as large as it can be.",
    {**dict.fromkeys(("field1", "field2", "field3", "field6", "field7"), 0xFFFFFFFF), "field4": -1, "field5": -1,
     "field8": "k" * 128}, encode=True)
add("LicenseKeyInfo", "over_limit", "Strings of any length are read.", but(KEY, field8="k" * 129))
for path in ("field4", "field5", "field8"):
    add("LicenseKeyInfo", f"two_{path}", "Of a slot with two elements the first is read.", KEY,
        change=several(path, 2))
add("LicenseKeyInfo", "overlapping", "The second time stamp is the first; the string's slot is read as a time stamp.",
    KEY, change=lambda m: (m.point("field5", *m.pointer("field4")), m.point("field4", *m.pointer("field8"))),
    reads=but(KEY, field4=8 << 32 | 24, field5=1700000000))
add("LicenseKeyInfo", "string_in_its_slot", "The string is the bytes of the pointer that leads to it.", KEY,
    change=lambda m: m.point("field8[0]", m.pointer("field8")[0], 8),
    reads=but(KEY, field8=b"\x10\0\0\0\x08\0\0\0"))

OTHER_KEY = {"field1": 11, "field2": 12, "field3": 13, "field4": None, "field5": 15, "field6": 16, "field7": 17,
             "field8": "K2"}
LICENSE = {"keyInfo1": KEY, "keyInfo2": OTHER_KEY}
NO_LICENSE = {"keyInfo1": None, "keyInfo2": None}
usual("LicenseInfo", LICENSE, NO_LICENSE,
      "keyInfo1:optional/44 >keyInfo1.field4:optional/8 >keyInfo1.field5:optional/8 >keyInfo1.field8:optional/8 "
      ">keyInfo1.field8[0]:string keyInfo2:optional/44 >keyInfo2.field5:optional/8 >keyInfo2.field8:optional/8 "
      ">keyInfo2.field8[0]:string", ("zt_optional", 39))
add("LicenseInfo", "only_first", "One key.", {"keyInfo1": KEY, "keyInfo2": None}, encode=True)
add("LicenseInfo", "only_second", "The other key.", {"keyInfo1": None, "keyInfo2": KEY}, encode=True)
add("LicenseInfo", "empty_members", "Keys with nothing in them are present.", {"keyInfo1": NO_KEY, "keyInfo2": NO_KEY},
    encode=True)
add("LicenseInfo", "two_keys_in_one", "Of a slot with two elements the first is read.", LICENSE,
    change=several("keyInfo1", 2))
add("LicenseInfo", "overlapping", "Both are the same key.", LICENSE,
    change=lambda m: m.point("keyInfo2", *m.pointer("keyInfo1")), reads={"keyInfo1": KEY, "keyInfo2": KEY})
add("LicenseInfo", "over_limit", "Strings of any length are read.", but(LICENSE, keyInfo2__field8="k" * 129))
add("LicenseInfo", "gaps_not_zero", "What stands in the gaps before arrays and slots does not matter to a reader.",
    LICENSE, start=5, change=lambda m: m.fill_gaps(b"\x5a"))

APP = {"productInfo": PRODUCT, "licenseInfo": LICENSE, "deviceInfo": DEVICE}
usual("AppInfo", APP, {"productInfo": NO_PRODUCT, "licenseInfo": NO_LICENSE, "deviceInfo": NO_DEVICE},
      ">productInfo.field1:string >productInfo.updCfgArray.items:vector/16 >productInfo.hsdpInfo.statuses:vector/16 "
      ">licenseInfo.keyInfo1:optional/44 >licenseInfo.keyInfo2:optional/44 >deviceInfo.field1:string "
      ">deviceInfo.field15:string", ("zt_string", 39))
add("AppInfo", "at_limit", "The strings of product and device are as long as they may be written.",
    {"productInfo": PRODUCT_AT_LIMIT, "licenseInfo": NO_LICENSE, "deviceInfo": DEVICE_AT_LIMIT}, encode=True)
add("AppInfo", "over_limit", "Strings of any length are read.",
    but(APP, productInfo__field1="a" * 33, deviceInfo__field15="j" * 129))
add("AppInfo", "overlapping", "Product and device share a string.", APP,
    change=lambda m: m.point("deviceInfo.field9", *m.pointer("productInfo.field4")),
    reads=but(APP, deviceInfo__field9="Endpoint"))

# --- Files ---

NAME = "/var/log/vyn.log"
usual("FileInfoParams", {"fileName": NAME}, {"fileName": ""}, "fileName:string", ("zt_string", 39), aligned=False)
add("FileInfoParams", "at_limit", "The name is as long as it may be written.", {"fileName": "f" * 1024}, encode=True)
add("FileInfoParams", "over_limit", "Names of any length are read.", {"fileName": "f" * 1025})
add("FileInfoParams", "overlapping", "The name is part of other bytes.", {"fileName": NAME},
    change=lambda m: m.point("fileName", 5, 3), reads={"fileName": "log"})

FILE = {"fileName": NAME, "field2": True, "field3": False, "timestamp": 1700000000000, "fileSize": 0x2122232425262728}
NO_FILE = {"fileName": "", "field2": False, "field3": False, "timestamp": 0, "fileSize": 0}
usual("FileInfo", FILE, NO_FILE, "fileName:string", ("zt_string", 39), aligned=False)
add("FileInfo", "other_flag", "The flags are told apart, and the time is before its epoch.",
    but(FILE, field2=False, field3=True, timestamp=-1), encode=True)
add("FileInfo", "at_limit", "The name is as long as it may be written, and the file as large as it can be.",
    but(FILE, fileName="f" * 1024, timestamp=2**63 - 1, fileSize=2**64 - 1), encode=True)
add("FileInfo", "over_limit", "Names of any length are read.", but(FILE, fileName="f" * 1025))
add("FileInfo", "flags_2_and_255", "Any byte but 0 is true.", FILE,
    change=lambda m: (m.poke("field2", 2), m.poke("field3", 255)), reads=but(FILE, field2=True, field3=True))
add("FileInfo", "flags_0_and_255", "Any byte but 0 is true.", FILE,
    change=lambda m: (m.poke("field2", 0), m.poke("field3", 255)), reads=but(FILE, field2=False, field3=True))
add("FileInfo", "overlapping", "The name is part of other bytes.", FILE,
    change=lambda m: m.point("fileName", 9, 7), reads=but(FILE, fileName="vyn.log"))

CHUNK_PARAMS = {"fileName": NAME, "chunkOffset": 0x3132333435363738, "chunkSize": 65536}
usual("FileChunkParams", CHUNK_PARAMS, {"fileName": "", "chunkOffset": 0, "chunkSize": 0}, "fileName:string",
      ("zt_string", 39), aligned=False)
add("FileChunkParams", "at_limit", "The name is as long as it may be written, and the numbers as large as they can be.",
    {"fileName": "f" * 1024, "chunkOffset": 2**64 - 1, "chunkSize": 2**64 - 1}, encode=True)
add("FileChunkParams", "over_limit", "Names of any length are read.", but(CHUNK_PARAMS, fileName="f" * 1025))
add("FileChunkParams", "overlapping", "The name is part of other bytes.", CHUNK_PARAMS,
    change=lambda m: m.point("fileName", 0, 4), reads=but(CHUNK_PARAMS, fileName="/var"))

CHUNK = {"fileName": NAME, "chunkOffset": 0x4142434445464748, "chunkSize": 6, "data": b"\0line\n"}
usual("FileChunk", CHUNK, {"fileName": "", "chunkOffset": 0, "chunkSize": 0, "data": b""},
      "fileName:string data:blob", ("zt_string", 39), aligned=False)
add("FileChunk", "at_limit", "Name and data are as long as they may be written.",
    {"fileName": "f" * 1024, "chunkOffset": 2**64 - 1, "chunkSize": 2**64 - 1, "data": b"d" * 65536}, encode=True)
add("FileChunk", "over_limit", "Names and data of any length are read.",
    but(CHUNK, fileName="f" * 1025, data=b"d" * 65537))
add("FileChunk", "no_data", "A chunk without bytes.", but(CHUNK, data=b""), encode=True)
add("FileChunk", "overlapping", "The data is bytes of the name.", CHUNK,
    change=lambda m: m.point("data", 1, 3), reads=but(CHUNK, data=b"var"))

# --- Certificates ---

CERT_PARAMS = {"field1": "-----BEGIN", "field2": "subject", "field3": True, "field4": 0x51525354}
NO_CERT_PARAMS = {"field1": "", "field2": "", "field3": False, "field4": 0}
usual("ClientCertParams", CERT_PARAMS, NO_CERT_PARAMS, "field1:string field2:string", ("zt_string", 39), aligned=False)
add("ClientCertParams", "at_limit", "Both strings are as long as they may be written.",
    {"field1": "a" * 16384, "field2": "b" * 16384, "field3": True, "field4": 0xFFFFFFFF}, encode=True)
add("ClientCertParams", "over_limit", "Strings of any length are read.",
    but(CERT_PARAMS, field1="a" * 16385, field2="b" * 16385))
for byte in (2, 255):
    add("ClientCertParams", f"flag_{byte}", "Any byte but 0 is true.", NO_CERT_PARAMS,
        change=lambda m: m.poke("field3", byte), reads=but(NO_CERT_PARAMS, field3=True))
add("ClientCertParams", "overlapping", "The second string is bytes of the first.", CERT_PARAMS,
    change=overlapping(("field2", 5)), reads=but(CERT_PARAMS, field2="-----"))

CERT = {"field1": 0x71727374, "field2": "certificate", "field3": "key", "field4": "label"}
NO_CERT = {"field1": 0, "field2": "", "field3": "", "field4": None}
usual("ClientCertInfo", CERT, NO_CERT,
      "field2:string field3:string field4:optional/8 >field4[0]:string", ("zt_string", 39))
add("ClientCertInfo", "field4_absent", "An absent string has no slot: the arena holds the two large ones.",
    but(CERT, field4=None), encode=True)
add("ClientCertInfo", "field4_empty", "An empty string that is present has a slot.", but(CERT, field4=""), encode=True)
add("ClientCertInfo", "at_limit", "Every string is as long as it may be written; the optional one may hold much less.",
    {"field1": 0xFFFFFFFF, "field2": "b" * 16384, "field3": "c" * 16384, "field4": "d" * 128}, encode=True)
add("ClientCertInfo", "over_limit", "Strings of any length are read.",
    but(CERT, field2="b" * 16385, field3="c" * 16385, field4="d" * 129))
add("ClientCertInfo", "two_field4", "Of a slot with two elements the first is read.", CERT, change=several("field4", 2))
add("ClientCertInfo", "overlapping", "All strings begin with the arena's first byte.", CERT,
    change=overlapping(("field3", 4), ("field4[0]", 14)),
    reads=but(CERT, field3="cert", field4="certificatekey"))

CERTS = {"certs": [CERT, {"field1": 2, "field2": "second", "field3": "", "field4": None},
                   {"field1": 3, "field2": "", "field3": "third", "field4": ""}]}
usual("ClientCertsInfo", CERTS, {"certs": []},
      "certs:vector/28 >certs[0].field2:string >certs[0].field3:string >certs[0].field4:optional/8 "
      ">certs[0].field4[0]:string >certs[1].field2:string >certs[2].field3:string >certs[2].field4:optional/8",
      ("zt_vector", 39))
TEN_CERTS = [{"field1": i, "field2": f"c{i}", "field3": f"k{i}", "field4": f"l{i}"} for i in range(11)]
add("ClientCertsInfo", "at_limit", "As many entries as may be written.", {"certs": TEN_CERTS[:10]}, encode=True)
add("ClientCertsInfo", "over_limit", "Lists of any length are read.", {"certs": TEN_CERTS})
add("ClientCertsInfo", "overlapping", "Two entries share a string's slot.", CERTS,
    change=lambda m: m.point("certs[1].field4", *m.pointer("certs[0].field4")),
    reads=but(CERTS, certs__1__field4="label"))

# --- Update identifiers ---

IDENTIFIERS = [bytes(range(16 * i, 16 * i + 16)) for i in range(11)]
add("VynUpdateIdentifier", "full", "Sixteen bytes; no arena is needed.", {"bytes": IDENTIFIERS[10]}, without=NULL,
    encode=True)
add("VynUpdateIdentifier", "minimal", "All zero.", {"bytes": bytes(16)}, encode=True)
add("VynUpdateIdentifier", "unset_arena", "The arena is not looked at.", {"bytes": IDENTIFIERS[1]}, without=UNSET)

RECORD = "VynUpdateIdentifierContainer"
THREE = {"identifiers": IDENTIFIERS[:3]}
NONE_AT_ALL = {"identifiers": []}
add(RECORD, "full", "Three identifiers.", THREE, encode=True)
add(RECORD, "minimal", "One identifier, the fewest that can be written.", {"identifiers": IDENTIFIERS[:1]}, encode=True)
add(RECORD, "full_start_5", "Identifiers are bytes and follow without a gap at any address.", THREE, start=5,
    encode=True)
add(RECORD, "empty", "A list of none can be read, though it cannot be written.", NONE_AT_ALL)
add(RECORD, "empty_at_end", "A list of none at the arena's end.", THREE, reads=NONE_AT_ALL,
    change=lambda m: m.point("identifiers", 48, 0))
add(RECORD, "at_limit", "As many as may be written.", {"identifiers": IDENTIFIERS[:10]}, encode=True)
add(RECORD, "over_limit", "Lists of any length are read.", {"identifiers": IDENTIFIERS})
add(RECORD, "behind_top", "The arena counts as empty: the reader looks at the arena's end, not at its top.", THREE,
    top=0)
add(RECORD, "overlapping", "The list begins inside another identifier.", THREE,
    change=lambda m: m.point("identifiers", 7, 32),
    reads={"identifiers": [bytes(range(7, 23)), bytes(range(23, 39))]})
add(RECORD, "null_arena", "No arena is given.", NONE_AT_ALL, without=NULL, raises=invalid_argument("zt_range", 49))
add(RECORD, "unset_arena", "The arena has no buffer, its three addresses are null: not even nothing lies in it.",
    NONE_AT_ALL, without=UNSET, raises=out_of_space())
# There is no message with a size of almost 4 GiB: sixteen times that is reserved before the pointer is looked at, and
# whether there is so much memory is up to the machine.
for name, about, offset, size in (
        ("outside", "begins behind the arena's end.", 64, 48),
        ("one_past_end", "lies inside but for its last byte.", 1, 48),
        ("empty_beyond_end", "has no bytes, but its offset is one too large all the same.", 49, 0),
        ("offset_ffffffff", "has the largest offset, which 32-bit arithmetic would wrap round.", 0xFFFFFFFF, 48),
        ("half_an_element", "ends inside its first element.", 0, 8),
        ("ragged", "ends inside the element after its first.", 0, 20)):
    add(RECORD, f"identifiers_{name}", f"identifiers: {about} The range reader reports a full arena.", THREE,
        change=lambda m: m.point("identifiers", offset, size), raises=out_of_space())

# --- Subscriptions ---
# In what order a set or a map is written is not fixed, so only those with one element are written again.

SUBSCRIPTION = {"severity": 2, "eventTypes": ["ThreatDetected"]}
NO_SUBSCRIPTION = {"severity": 0, "eventTypes": []}
usual("VynSubscription", SUBSCRIPTION, NO_SUBSCRIPTION, "eventTypes:set/8 >eventTypes[0]:string", ("zt_set", 43))
add("VynSubscription", "three_names", "Three names.", {"severity": 1, "eventTypes": ["a", "bb", "ccc"]})
add("VynSubscription", "repeated_name", "A name that is there already is dropped.",
    {"severity": 1, "eventTypes": ["a", "b", "a"]}, reads={"severity": 1, "eventTypes": ["a", "b"]})
add("VynSubscription", "repeated_name_outside", "A name's bytes are looked for before it could be dropped.",
    {"severity": 1, "eventTypes": ["a", "b", "a"]}, change=lambda m: m.point("eventTypes[2]", 99, 1),
    raises=out_of_range("string", 99))
add("VynSubscription", "two_names_outside", "Names are read in the order of the array.",
    {"severity": 1, "eventTypes": ["a", "b"]},
    change=lambda m: (m.point("eventTypes[0]", 77), m.point("eventTypes[1]", 88)), raises=out_of_range("string", 77))
add("VynSubscription", "empty_name", "An empty name is a name.", {"severity": 3, "eventTypes": [""]}, encode=True)
add("VynSubscription", "at_limit", "The name is as long as it may be written.",
    {"severity": 3, "eventTypes": ["n" * 128]}, encode=True)
add("VynSubscription", "most_names", "As many names as may be written.",
    {"severity": 0, "eventTypes": [f"n{i:03}" for i in range(128)]})
add("VynSubscription", "over_limit", "Sets and names of any length are read.",
    {"severity": 0, "eventTypes": ["x" * 129] + [f"n{i:03}" for i in range(128)]})
for name, severity in (("severity_4", 4), ("severity_negative", -1)):
    add("VynSubscription", name, "Severities are not checked.", {"severity": severity, "eventTypes": ["a"]},
        encode=True)
add("VynSubscription", "overlapping", "One name is the beginning of the other's bytes.",
    {"severity": 1, "eventTypes": ["scan", "stop"]},
    change=lambda m: m.point("eventTypes[1]", m.pointer("eventTypes[0]")[0], 2),
    reads={"severity": 1, "eventTypes": ["scan", "sc"]})

FOUR = {"entries": [(3, ["red"]), (1, ["green", "blue"]), (0, []), (2, ["x", "yy", "zzz"])]}
ONE = {"entries": [(0, ["boot"])]}
add("VynSubscriptions", "full", "All four severities, in no particular order.", FOUR)
add("VynSubscriptions", "one", "One severity. It is 0, so that the entries that are not used do not show.", ONE,
    encode=True)
add("VynSubscriptions", "one_start_5", "The arena begins 5 past a multiple of 8.", ONE, start=5, encode=True)
add("VynSubscriptions", "unaligned", "Laid out for an aligned arena and received at an odd address.", FOUR,
    read_from_start=3)
add("VynSubscriptions", "minimal", "All zero, as a record without entries is written: it reads as severity 0 without\n"
    "names, which in an empty arena is written as zeros again.", {"entries": []}, reads={"entries": [(0, [])]},
    encode=True)
add("VynSubscriptions", "unused_entries", "Entries that are not used read as severity 0 without names.",
    {"entries": [(2, ["a"]), (3, ["b"])]}, reads={"entries": [(2, ["a"]), (3, ["b"]), (0, [])]})
add("VynSubscriptions", "severity_0_before_unused", "An entry of severity 0 stays as it is; those not used come later.",
    {"entries": [(1, ["a"]), (0, ["b"])]})
add("VynSubscriptions", "unused_before_severity_0", "The first of one severity stays, even where it is one not used.",
    {"entries": [(1, ["a"]), (0, []), (0, ["b"])]}, reads={"entries": [(1, ["a"]), (0, [])]})
add("VynSubscriptions", "repeated_severity", "Of two entries with one severity the first stays; names are not merged.",
    {"entries": [(2, ["a"]), (2, ["b", "c"]), (1, ["d"]), (0, [])]},
    reads={"entries": [(2, ["a"]), (1, ["d"]), (0, [])]})
add("VynSubscriptions", "repeated_severity_outside", "An entry that is going to be dropped is read in full.",
    {"entries": [(2, ["a"]), (2, ["b"]), (1, ["d"]), (0, [])]},
    change=lambda m: m.point("entries[1].eventTypes[0]", 500), raises=out_of_range("string", 500))
add("VynSubscriptions", "severities_unchecked", "Severities are not checked.",
    {"entries": [(4, ["a"]), (-1, ["b"]), (2147483647, ["c"]), (0, [])]})
add("VynSubscriptions", "over_limit", "Sets and names of any length are read.",
    {"entries": [(0, ["x" * 129]), (1, [f"n{i:03}" for i in range(129)])]},
    reads={"entries": [(0, ["x" * 129]), (1, [f"n{i:03}" for i in range(129)])]})
add("VynSubscriptions", "behind_top", "The arena counts as empty: the reader looks at the arena's end, not at its top.",
    FOUR, top=0)
add("VynSubscriptions", "overlapping", "Two severities share their names.", FOUR,
    change=lambda m: m.point("entries[2].eventTypes", *m.pointer("entries[1].eventTypes")),
    reads={"entries": [(3, ["red"]), (1, ["green", "blue"]), (0, ["green", "blue"]), (2, ["x", "yy", "zzz"])]})
add("VynSubscriptions", "null_arena", "No arena is given, and the entries that are not used need one too.",
    {"entries": []}, without=NULL, raises=invalid_argument("zt_set", 43))
add("VynSubscriptions", "unset_arena", "The arena has no buffer, its three addresses are null: not even nothing lies\n"
    "in it.", {"entries": []}, without=UNSET, raises=out_of_range("set", 0))
NAMED = {"entries": [(severity, [f"name {severity}"]) for severity in (3, 2, 1, 0)]}
NAMED_SIZE = Message("VynSubscriptions", NAMED).size
for i in range(4):
    path = f"entries[{i}].eventTypes"
    for name, about, offset, size in (
            ("outside", "begins behind the arena's end.", NAMED_SIZE + 16, 8),
            ("one_past_end", "lies inside but for its last byte.", NAMED_SIZE - 7, 8),
            ("empty_beyond_end", "has no bytes, but its offset is one too large all the same.", NAMED_SIZE + 1, 0),
            ("offset_ffffffff", "has the largest offset, which 32-bit arithmetic would wrap round.", 0xFFFFFFFF, 8),
            ("size_ffffffff", "has the largest size of whole elements, which 32-bit arithmetic would wrap round.", 0,
             0xFFFFFFF8),
            ("half_an_element", "ends inside its first element.", 0, 4),
            ("ragged", "ends inside the element after its first.", 0, 12)):
        add("VynSubscriptions", f"{file_name(path)}_{name}", f"{path}: {about}", NAMED,
            change=lambda m: m.point(path, offset, size), raises=out_of_range("set", offset))
for i in range(3):
    add("VynSubscriptions", f"entries_{i}_and_{i + 1}_outside",
        f"Entries {i} and {i + 1} both begin behind the arena's end; entry {i} is read first.", NAMED,
        change=lambda m: (m.point(f"entries[{i}].eventTypes", 1000), m.point(f"entries[{i + 1}].eventTypes", 2000)),
        raises=out_of_range("set", 1000))

RECORD = "VynSubscriptionsWithHash"
add(RECORD, "full", "All four severities, and a hash that nobody checks.",
    {"hash": 0x0123456789ABCDEF, "subscriptions": FOUR})
add(RECORD, "one", "One severity, and a hash with all bits set.", {"hash": 2**64 - 1, "subscriptions": ONE},
    encode=True)
add(RECORD, "one_start_5", "The arena begins 5 past a multiple of 8.", {"hash": 1 << 63, "subscriptions": ONE},
    start=5, encode=True)
add(RECORD, "minimal", "All zero, as an empty record is written; it reads as severity 0 without names.",
    {"hash": 0, "subscriptions": {"entries": []}}, reads={"hash": 0, "subscriptions": {"entries": [(0, [])]}},
    encode=True)
add(RECORD, "unaligned", "Laid out for an aligned arena and received at an odd address.",
    {"hash": 5, "subscriptions": FOUR}, read_from_start=3)
add(RECORD, "repeated_severity", "Of two entries with one severity the first stays.",
    {"hash": 6, "subscriptions": {"entries": [(1, ["a"]), (1, ["b"]), (0, ["c"]), (1, ["d"])]}},
    reads={"hash": 6, "subscriptions": {"entries": [(1, ["a"]), (0, ["c"])]}})
add(RECORD, "over_limit", "Names of any length are read.",
    {"hash": 7, "subscriptions": {"entries": [(0, ["x" * 129])]}})
add(RECORD, "overlapping", "Two severities share their names.", {"hash": 8, "subscriptions": NAMED},
    change=lambda m: m.point("subscriptions.entries[3].eventTypes", *m.pointer("subscriptions.entries[0].eventTypes")),
    reads={"hash": 8, "subscriptions": {"entries": NAMED["entries"][:3] + [(0, ["name 3"])]}})
add(RECORD, "null_arena", "No arena is given.", {"hash": 0, "subscriptions": {"entries": []}}, without=NULL,
    raises=invalid_argument("zt_set", 43))
add(RECORD, "unset_arena", "The arena has no buffer.", {"hash": 0, "subscriptions": {"entries": []}}, without=UNSET,
    raises=out_of_range("set", 0))
for i in range(4):
    add(RECORD, f"entries_{i}_outside", "Begins behind the arena's end.", {"hash": 9, "subscriptions": NAMED},
        change=lambda m: m.point(f"subscriptions.entries[{i}].eventTypes", 4096), raises=out_of_range("set", 4096))

# --- Events ---
# An event is read up to the arena's top, in strict bounds and without exceptions: what cannot be read stays empty,
# the status says so, and the rest is read all the same.

RECORD = "VynEvent"
EVENT = {"field1": "first", "severity": 2, "field3": "number 3", "field4": "4", "field5": "fifth", "field6": "no. six",
         "field7": "the seventh", "field8": 0x81828384, "field9": 0x9192939495969798,
         "stringArray": [f"string {i}" for i in range(9)]}
NO_EVENT = {**dict.fromkeys(("field1", "field3", "field4", "field5", "field6", "field7"), ""), "severity": 0,
            "field8": 0, "field9": 0, "stringArray": [""] * 9}
EVENT_TEXTS = ["field1", "field3", "field4", "field5", "field6", "field7"] + [f"stringArray[{i}]" for i in range(9)]
EVENT_SIZE = Message(RECORD, EVENT).size


def without_texts(fields, paths):
    """The event of which these strings could not be read."""
    return but(fields, **{path.replace("[", "__").rstrip("]"): "" for path in paths})


def with_room(message):
    message.append(b"behind the arena's top", "of no field")


add(RECORD, "full", "Every member is there, each with content of its own.", EVENT, encode=True)
add(RECORD, "full_start_5", "Strings follow one another at any address.", EVENT, start=5, encode=True)
add(RECORD, "minimal", "Every string is empty and owns a byte, which is not written.", NO_EVENT, encode=True)
add(RECORD, "some_empty", "Empty strings among others, each with a byte of its own.",
    without_texts(EVENT, ["field1", "field5", "stringArray[4]", "stringArray[8]"]), encode=True)
EVENT_AT_LIMIT = {"field1": "a" * 128, "severity": 3, "field3": "c" * 128, "field4": "d" * 128, "field5": "e" * 64,
                  "field6": "f" * 128, "field7": "g" * 1024, "field8": 0xFFFFFFFF, "field9": 2**64 - 1,
                  "stringArray": [letter * 512 for letter in "ABCDEFGHI"]}
add(RECORD, "at_limit", "Every string is as long as it may be written, and every number as large as it can be.",
    EVENT_AT_LIMIT, encode=True)
add(RECORD, "over_limit", "Strings of any length are read.",
    but(EVENT, field1="a" * 2000, field3="c" * 129, field4="d" * 129, field5="e" * 65, field6="f" * 129,
        field7="g" * 1025, stringArray=[letter * 513 for letter in "ABCDEFGHI"]))
add(RECORD, "field5_over_limit", "One byte more than may be written, and all else as it is written.",
    but(EVENT, field5="e" * 65))
add(RECORD, "below_top", "Everything lies below the top; what follows it does not matter.", EVENT, top=EVENT_SIZE,
    change=with_room)
add(RECORD, "severity_0", "The least severity.", but(EVENT, severity=0), encode=True)
add(RECORD, "severity_3", "The greatest severity.", but(EVENT, severity=3), encode=True)
add(RECORD, "severity_4", "One more than the greatest severity fails and is kept.", but(EVENT, severity=4),
    status="failed")
add(RECORD, "severity_ffffffff", "All bits set fails and is kept.", but(EVENT, severity=-1), status="failed")
add(RECORD, "severity_and_text", "Two failures, and everything else is read.", but(EVENT, severity=7), status="failed",
    change=lambda m: m.point("field6", 9999), reads=but(EVENT, severity=7, field6=""))
for path in EVENT_TEXTS:
    add(RECORD, f"{file_name(path)}_behind_top", f"{path}: begins at the arena's top, below its end.", EVENT,
        top=EVENT_SIZE, change=lambda m: (with_room(m), m.point(path, EVENT_SIZE, 4)), status="failed",
        reads=without_texts(EVENT, [path]))
for path in ("field1", "field5", "stringArray[8]"):
    for name, about, offset, size in (
            ("outside", "begins behind the arena's end.", EVENT_SIZE + 100, 4),
            ("one_past_top", "lies below the top but for its last byte.", EVENT_SIZE - 3, 4),
            ("empty_at_top", "has no bytes, and its offset is the first above the used part.", EVENT_SIZE, 0),
            ("not_written", "was too long for its writer.", 0xFFFFFFFF, 0xFFFFFFFF),
            ("offset_ffffffff", "has the largest offset, which 32-bit arithmetic would wrap round.", 0xFFFFFFFF, 4),
            ("size_ffffffff", "has the largest size, which 32-bit arithmetic would wrap round.", 1, 0xFFFFFFFF)):
        add(RECORD, f"{file_name(path)}_{name}", f"{path}: {about}", EVENT, status="failed", top=EVENT_SIZE,
            change=lambda m: (with_room(m), m.point(path, offset, size)), reads=without_texts(EVENT, [path]))
add(RECORD, "ends_at_top", "A string that ends at the top, and an empty one at the last offset below it.", EVENT,
    change=lambda m: (m.point("field1", EVENT_SIZE - 8, 8), m.point("field3", EVENT_SIZE - 1, 0)),
    reads=but(EVENT, field1="string 8", field3=""))
add(RECORD, "all_outside", "No string can be read; the numbers can.", EVENT, status="failed",
    change=lambda m: [m.point(path, EVENT_SIZE) for path in EVENT_TEXTS],
    reads=without_texts(EVENT, EVENT_TEXTS))
add(RECORD, "top_at_start", "Nothing of the arena is in use.", EVENT, top=0, status="failed",
    reads=without_texts(EVENT, EVENT_TEXTS))
add(RECORD, "unset_arena", "The arena has no buffer.", EVENT, without=UNSET, status="failed",
    reads=without_texts(EVENT, EVENT_TEXTS))
add(RECORD, "overlapping", "All strings begin with the arena's first byte.", EVENT,
    change=overlapping(*[(path, i) for i, path in enumerate(EVENT_TEXTS)][1:]),
    reads=but(EVENT, **{path.replace("[", "__").rstrip("]"): "firstnumber 34fifth"[:i]
                        for i, path in enumerate(EVENT_TEXTS) if i}))

missing = set(RECORDS) - {case.message.record for case in CASES}
assert not missing, f"no messages of {sorted(missing)}"
