"""A second account of the wire format, kept apart from the library so that the two can disagree.

It lays out a record's wire structure and arena byte by byte, reads such bytes back, and writes both down as the
message files of this folder, whose format README.md describes. The messages themselves are chosen in cases.py;
corpus.py keeps the files.
"""

import struct

# An arena of which there is nothing but a null pointer; one whose three addresses are null; and none at all, because
# the conversion takes no arena.
NULL, UNSET, NONE = "null", "unset", "none"

# The byte that an empty string of an event owns is not written.
UNWRITTEN = None


class Raised(Exception):
    """What a reader throws: the exception's type and what can be seen of it."""

    def __init__(self, type_, **seen):
        super().__init__(type_, seen)
        self.type, self.seen = type_, {name: str(value) for name, value in seen.items()}


def out_of_range(codec, offset):
    text = f"zt {codec}: zt_arena does not contain an element with the address {offset}"
    return Raised("std::out_of_range", text=text)


def out_of_space():
    return Raised("mur::ResultCodeException", text="ResultCodeException", rendered="0x80000062 (Out of space)",
                  code="0x80000062", file="none", line=0)


def invalid_argument(file, line):
    folder = "source" if file == "zt_blob" else "include/common"
    return Raised("mur::InvalidArgumentException", text="InvalidArgumentException",
                  rendered="0x00000000 (No error)", code="0x00000000",
                  file=f"lyr_ipc/source/common/{folder}/{file}", line=line)


# --- How values are written down ---


def as_bytes(text):
    return text.encode() if isinstance(text, str) else bytes(text)


def is_run(data):
    return len(data) > 16 and len(set(data)) == 1


def quoted(data):
    def one(byte):
        if byte in b'"\\':
            return "\\" + chr(byte)
        return chr(byte) if 0x20 <= byte < 0x7F else f"\\x{byte:02x}"

    data = as_bytes(data)
    if is_run(data):
        return f'"{one(data[0])}" * {len(data)}'
    return '"' + "".join(map(one, data)) + '"'


def hexadecimal(data):
    if not data:
        return "empty"
    if is_run(data):
        return f"{data[0]:02x} * {len(data)}"
    return data.hex(" ")


# --- Laying out ---


class Cell:
    """Some adjoining bytes of the message that mean one thing."""

    def __init__(self, offset, data, path, meaning):
        self.offset, self.data, self.path, self.meaning = offset, data, path, meaning
        self.spoilt = False

    def lines(self):
        """(offset, hexadecimal bytes, comment) of each line that the cell takes."""
        data = self.data
        if is_run(data):
            return [(self.offset, f"{self.two_digits(data[0])} *{len(data)}", self.comment(data))]
        lines = []
        for at in range(0, len(data), 16):
            part = data[at : at + 16]
            groups = [" ".join(map(self.two_digits, part[i : i + 4])) for i in range(0, len(part), 4)]
            comment = self.comment(part) if at == 0 or self.meaning == "text" else ""
            if at > 0 and comment:
                comment = " " * len(f"{self.path}: ") + quoted(part)
            if self.spoilt:
                comment += "  <--"
            lines.append((self.offset + at, "  ".join(groups), comment))
        return lines

    @staticmethod
    def two_digits(byte):
        return ".." if byte is UNWRITTEN else f"{byte:02x}"

    def comment(self, part):
        if self.meaning == "pointer":
            offset, size = struct.unpack("<II", self.data)
            return f"{self.path}: offset {offset}, size {size}"
        if self.meaning in ("number", "signed"):
            return f"{self.path}: {int.from_bytes(self.data, 'little', signed=self.meaning == 'signed')}"
        if self.meaning == "text":
            return f"{self.path}: {quoted(part)}"
        if self.meaning == "bytes":
            return f"{self.path}: {len(self.data)} byte{'s' if len(self.data) > 1 else ''}"
        if self.meaning == "own byte":
            return f"{self.path}: empty, with a byte of its own"
        return self.meaning


class Layout:
    """A message under construction. `start` is how far the arena begins past a multiple of 8."""

    def __init__(self, start, limited):
        self.start, self.limited = start, limited
        self.top = 0
        self.wire, self.arena = [], []

    def check(self, amount, limit, what):
        if self.limited and amount > limit:
            raise ValueError(f"{what} is over its limit of {limit}")

    def reserve(self, size, alignment):
        address = self.start + self.top
        aligned = (address + alignment - 1) // alignment * alignment - self.start
        if aligned > self.top:
            self.arena.append(Cell(self.top, bytes(aligned - self.top), "", "padding"))
        self.top = aligned + size
        return aligned

    def store(self, data, path, meaning):
        offset = self.reserve(len(data), 1)
        if data:
            self.arena.append(Cell(offset, data, path, meaning))
        return offset

    @staticmethod
    def point(region, at, path, offset, size):
        region.append(Cell(at, struct.pack("<II", offset, size), path, "pointer"))


# --- Reading ---


class Received:
    """An arena as a reader sees it, with the status that an event's reader clears."""

    def __init__(self, data, top):
        self.data, self.top = data, 0 if data == UNSET else top
        self.status = "ok"

    def resolve(self, pointer, element_size):
        """The bytes that the pointer describes, or nothing where it does not resolve."""
        offset, size = struct.unpack("<II", pointer)
        if self.data == UNSET:
            # Its start is null: offset 0 is null, any other address lies behind its end.
            return None
        if offset + size > len(self.data):
            return None
        if element_size > 1 and size % element_size != 0:
            return None
        return self.data[offset : offset + size]

    def elements(self, pointer, size, codec, file, line):
        if self.data == NULL:
            raise invalid_argument(file, line)
        data = self.resolve(pointer, size)
        if data is None:
            raise out_of_range(codec, struct.unpack("<II", pointer)[0])
        return [data[at : at + size] for at in range(0, len(data), size)]


# --- What a member is on the wire ---
# Each kind writes a value at a place of a region, reads it from its own bytes, and shows it as named fields.


class Number:
    def __init__(self, size, signed=False):
        self.size, self.alignment, self.signed = size, size, signed

    def write(self, layout, region, at, path, value):
        data = value.to_bytes(self.size, "little", signed=self.signed)
        region.append(Cell(at, data, path, "signed" if self.signed else "number"))

    def read(self, data, arena):
        return int.from_bytes(data, "little", signed=self.signed)

    def show(self, path, value):
        return {path: str(value)}


class Flag(Number):
    """A bool's byte; any but 0 reads as true."""

    def __init__(self):
        super().__init__(1)

    def write(self, layout, region, at, path, value):
        super().write(layout, region, at, path, int(value))

    def read(self, data, arena):
        return data[0] != 0

    def show(self, path, value):
        return {path: "true" if value else "false"}


class Bytes16:
    size, alignment = 16, 1

    def write(self, layout, region, at, path, value):
        assert len(value) == 16
        region.append(Cell(at, bytes(value), path, "bytes"))

    def read(self, data, arena):
        return data

    def show(self, path, value):
        return {path: value.hex(" ")}


class Text:
    size, alignment = 8, 4

    def __init__(self, limit):
        self.limit = limit

    def write(self, layout, region, at, path, value):
        data = as_bytes(value)
        layout.check(len(data), self.limit, path)
        layout.point(region, at, path, layout.store(data, path, "text"), len(data))

    def read(self, data, arena):
        return b"".join(arena.elements(data, 1, "string", "zt_string", 39))

    def show(self, path, value):
        return {path: quoted(value)}


class Blob:
    size, alignment = 8, 4

    def write(self, layout, region, at, path, value):
        layout.check(len(value), 65536, path)
        layout.point(region, at, path, layout.store(bytes(value), path, "bytes"), len(value))

    def read(self, data, arena):
        return b"".join(arena.elements(data, 1, "blob", "zt_blob", 32))

    def show(self, path, value):
        return {path: hexadecimal(value)}


class Nested:
    def __init__(self, name):
        self.record = RECORDS[name]
        self.size, self.alignment = self.record.size, self.record.alignment

    def write(self, layout, region, at, path, value):
        self.record.write(layout, region, at, path, value)

    def read(self, data, arena):
        return self.record.read(data, arena)

    def show(self, path, value):
        return self.record.show(path, value)


class List:
    size, alignment = 8, 4

    def __init__(self, name, limit):
        self.element, self.limit = Nested(name), limit

    def write(self, layout, region, at, path, value):
        layout.check(len(value), self.limit, path)
        size = self.element.size
        offset = layout.reserve(len(value) * size, self.element.alignment)
        layout.point(region, at, path, offset, len(value) * size)
        for i, one in enumerate(value):
            self.element.write(layout, layout.arena, offset + i * size, f"{path}[{i}]", one)

    def read(self, data, arena):
        parts = arena.elements(data, self.element.size, "vector", "zt_vector", 39)
        return [self.element.read(part, arena) for part in parts]

    def show(self, path, value):
        shown = {} if value else {path: "empty"}
        for i, one in enumerate(value):
            shown.update(self.element.show(f"{path}[{i}]", one))
        return shown


class Optional:
    """A slot of one element, reserved before what the element itself refers to."""

    size, alignment = 8, 4

    def __init__(self, element):
        self.element = element

    def write(self, layout, region, at, path, value):
        if value is None:
            layout.point(region, at, path, 0, 0)
            return
        offset = layout.reserve(self.element.size, self.element.alignment)
        layout.point(region, at, path, offset, self.element.size)
        inside = f"{path}[0]" if isinstance(self.element, Text) else path
        self.element.write(layout, layout.arena, offset, inside, value)

    def read(self, data, arena):
        parts = arena.elements(data, self.element.size, "optional", "zt_optional", 39)
        return self.element.read(parts[0], arena) if parts else None

    def show(self, path, value):
        return {path: "absent"} if value is None else self.element.show(path, value)


class Names:
    """A set of strings. Reading keeps one of each."""

    size, alignment = 8, 4

    def write(self, layout, region, at, path, value):
        layout.check(len(value), 128, path)
        offset = layout.reserve(8 * len(value), 4)
        layout.point(region, at, path, offset, 8 * len(value))
        for i, name in enumerate(value):
            Text(128).write(layout, layout.arena, offset + 8 * i, f"{path}[{i}]", name)

    def read(self, data, arena):
        parts = arena.elements(data, 8, "set", "zt_set", 43)
        return sorted({Text(128).read(part, arena) for part in parts})

    def show(self, path, value):
        return {path: "{" + ", ".join(quoted(name) for name in sorted(map(as_bytes, value))) + "}"}


class Identifiers:
    """A range of 16-byte identifiers. A bad pointer is reported like a full arena, and an empty range not written."""

    size, alignment = 8, 4

    def write(self, layout, region, at, path, value):
        if layout.limited and not value:
            raise ValueError(f"{path} is empty")
        layout.check(len(value), 10, path)
        offset = layout.reserve(16 * len(value), 1)
        layout.point(region, at, path, offset, 16 * len(value))
        for i, one in enumerate(value):
            Bytes16().write(layout, layout.arena, offset + 16 * i, f"{path}[{i}]", one)

    def read(self, data, arena):
        if arena.data == NULL:
            raise invalid_argument("zt_range", 49)
        found = arena.resolve(data, 16)
        if found is None:
            raise out_of_space()
        return [found[at : at + 16] for at in range(0, len(found), 16)]

    def show(self, path, value):
        return {f"{path}[{i}]": one.hex(" ") for i, one in enumerate(value)} or {path: "empty"}


class Entries:
    """Four subscriptions side by side. All four are always read; of one severity the first stays."""

    size, alignment = 48, 4

    def write(self, layout, region, at, path, value):
        layout.check(len(value), 4, path)
        entry = RECORDS["VynSubscription"]
        for i in range(4):
            inside = f"{path}[{i}]"
            if i < len(value):
                severity, names = value[i]
                entry.write(layout, region, at + 12 * i, inside, {"severity": severity, "eventTypes": names})
            else:
                region.append(Cell(at + 12 * i, bytes(4), f"{inside}.severity", "signed"))
                layout.point(region, at + 12 * i + 4, f"{inside}.eventTypes", 0, 0)

    def read(self, data, arena):
        entry = RECORDS["VynSubscription"]
        found = {}
        for i in range(4):
            one = entry.read(data[12 * i : 12 * i + 12], arena)
            found.setdefault(one["severity"], one["eventTypes"])
        return list(found.items())

    def show(self, path, value):
        shown = {}
        owner = path.rpartition(".")[0] or path
        for severity, names in value:
            shown.update(Names().show(f"{owner}.severity[{severity}]", names))
        return shown


class EventText:
    """A string of an event: its own placement, where an empty one owns a byte, and its own bounds, up to `top`."""

    size, alignment = 8, 4

    def __init__(self, cap):
        self.cap = cap

    def write(self, layout, region, at, path, value):
        data = as_bytes(value)
        layout.check(len(data), self.cap, path)
        offset = layout.top
        meaning = "text" if data else "own byte"
        layout.arena.append(Cell(offset, list(data) or [UNWRITTEN], path, meaning))
        layout.top += max(len(data), 1)
        layout.point(region, at, path, offset, len(data))

    def read(self, data, arena):
        offset, size = struct.unpack("<II", data)
        if arena.data == UNSET or offset >= arena.top or size > arena.top - offset:
            arena.status = "failed"
            return b""
        return arena.data[offset : offset + size]

    def show(self, path, value):
        return {path: quoted(value)}


class EventTexts:
    size, alignment = 72, 4

    def write(self, layout, region, at, path, value):
        assert len(value) == 9
        for i, one in enumerate(value):
            EventText(512).write(layout, region, at + 8 * i, f"{path}[{i}]", one)

    def read(self, data, arena):
        return [EventText(512).read(data[8 * i : 8 * i + 8], arena) for i in range(9)]

    def show(self, path, value):
        return {f"{path}[{i}]": quoted(one) for i, one in enumerate(value)}


class EventSeverity(Number):
    """Copied on writing; on reading a value over 3 is kept, and the event is marked as failed."""

    def __init__(self):
        super().__init__(4, signed=True)

    def read(self, data, arena):
        value = super().read(data, arena)
        if not 0 <= value <= 3:
            arena.status = "failed"
        return value


class NotOnWire:
    """A member of the domain record only, which reads as 0."""


class Record:
    """`rows` are (offset, member, kind), as the wire has them; `reads_first` names what is read ahead of its turn."""

    def __init__(self, size, alignment, *rows, reads_first=()):
        self.size, self.alignment, self.rows = size, alignment, rows
        self.reads_first = reads_first
        end = 0
        for offset, name, kind in self.fields():
            assert end <= offset < end + 8 and offset % kind.alignment == 0, name
            end = offset + kind.size
        assert size - 8 < end <= size and size % alignment == 0

    def fields(self):
        return [row for row in self.rows if not isinstance(row[2], NotOnWire)]

    def write(self, layout, region, at, path, value):
        assert set(value) == {name for _, name, _ in self.fields()}, (path, sorted(value))
        end = 0
        for offset, name, kind in self.fields():
            self.pad(region, at + end, at + offset)
            kind.write(layout, region, at + offset, f"{path}.{name}".lstrip("."), value[name])
            end = offset + kind.size
        self.pad(region, at + end, at + self.size)

    @staticmethod
    def pad(region, begin, end):
        if end > begin:
            region.append(Cell(begin, bytes(end - begin), "", "padding"))

    def read(self, data, arena):
        order = sorted(self.fields(), key=lambda row: row[1] not in self.reads_first)
        return {name: kind.read(data[offset : offset + kind.size], arena) for offset, name, kind in order}

    def show(self, path, value):
        shown = {}
        for _, name, kind in self.rows:
            inside = f"{path}.{name}".lstrip(".")
            shown.update({inside: "0"} if isinstance(kind, NotOnWire) else kind.show(inside, value[name]))
        return shown


U16, U32, U64 = Number(2), Number(4), Number(8)
I32, TIME = Number(4, signed=True), Number(8, signed=True)

RECORDS = {}
RECORDS["Credentials"] = Record(16, 4,
    (0, "userName", Text(128)),
    (8, "password", Text(128)))
RECORDS["ProxySettings"] = Record(28, 4,
    (0, "address", Text(128)),
    (8, "port", U16),
    (12, "credentials", Nested("Credentials")))
RECORDS["SslSettings"] = Record(36, 4,
    (0, "field1", U16),
    (4, "field2", Text(128)),
    (12, "field3", Text(128)),
    (20, "field4", Text(128)),
    (28, "field5", Text(128)))
RECORDS["VynRequestsTimeouts"] = Record(16, 8,
    (0, "field1", U64),
    (8, "field2", U64))
RECORDS["ServerConnectionParameters"] = Record(32, 4,
    (0, "address", Text(128)),
    (8, "proxy", Optional(Nested("ProxySettings"))),
    (16, "ssl", Optional(Nested("SslSettings"))),
    (24, "timeouts", Optional(Nested("VynRequestsTimeouts"))))
RECORDS["VynConnectionParameters"] = Record(48, 4,
    (0, "serverParameters", Nested("ServerConnectionParameters")),
    (32, "credentials", Nested("Credentials")))
RECORDS["VynConnectorSettings"] = Record(48, 8,
    (0, "field1", U64),
    (8, "field2", U64),
    (16, "field3", U64),
    (24, "field4", U64),
    (32, "field5", U64),
    (40, "field6", U64))
RECORDS["VynServerData"] = Record(8, 8,
    (0, "field1", U64))
RECORDS["VynParam"] = Record(16, 4,
    (0, "name", Text(128)),
    (8, "value", Blob()),
    reads_first=("value",))
RECORDS["VynParams"] = Record(8, 4,
    (0, "params", List("VynParam", 2147483647)))
RECORDS["ProductUpdCfg"] = Record(16, 4,
    (0, "field1", Text(256)),
    (8, "field2", Text(256)))
RECORDS["ProductUpdCfgArray"] = Record(8, 4,
    (0, "items", List("ProductUpdCfg", 32)))
RECORDS["ProductHsdpStatus"] = Record(16, 4,
    (0, "field1", Text(128)),
    (8, "field2", Text(256)))
RECORDS["ProductHsdpInfo"] = Record(12, 4,
    (0, "field1", U32),
    (4, "statuses", List("ProductHsdpStatus", 5)))
RECORDS["ProductInfo"] = Record(64, 8,
    (0, "field1", Text(32)),
    (8, "field2", Text(32)),
    (16, "field3", U64),
    (24, "field4", Text(256)),
    (32, "field5", Text(256)),
    (40, "updCfgArray", Nested("ProductUpdCfgArray")),
    (48, "hsdpInfo", Nested("ProductHsdpInfo")),
    (60, "field6", U32))
RECORDS["DeviceInfo"] = Record(120, 8,
    (0, "field1", Text(256)),
    (8, "field2", Text(128)),
    (16, "field3", U32),
    (20, "field4", U32),
    (24, "field5", U32),
    (28, "field6", Text(128)),
    (36, "field7", Text(128)),
    (48, "field8", U64),
    (56, "field9", Text(128)),
    (64, "field10", Text(256)),
    (72, "field11", Text(128)),
    (80, "field12", Text(128)),
    (88, "field13", Text(128)),
    (96, "field14", Bytes16()),
    (112, "field15", Text(128)))
RECORDS["LicenseKeyInfo"] = Record(44, 4,
    (0, "field1", U32),
    (4, "field2", U32),
    (8, "field3", U32),
    (12, "field4", Optional(TIME)),
    (20, "field5", Optional(TIME)),
    (28, "field6", U32),
    (32, "field7", U32),
    (36, "field8", Optional(Text(128))))
RECORDS["LicenseInfo"] = Record(16, 4,
    (0, "keyInfo1", Optional(Nested("LicenseKeyInfo"))),
    (8, "keyInfo2", Optional(Nested("LicenseKeyInfo"))))
RECORDS["AppInfo"] = Record(200, 8,
    (0, "productInfo", Nested("ProductInfo")),
    (64, "licenseInfo", Nested("LicenseInfo")),
    (80, "deviceInfo", Nested("DeviceInfo")))
RECORDS["DynamicAppInfo"] = Record(8, 8,
    (0, "field1", U64))
RECORDS["FileInfoParams"] = Record(8, 4,
    (0, "fileName", Text(1024)))
RECORDS["FileInfo"] = Record(32, 8,
    (0, "fileName", Text(1024)),
    (8, "field2", Flag()),
    (9, "field3", Flag()),
    (16, "timestamp", TIME),
    (24, "fileSize", U64))
RECORDS["FileChunkParams"] = Record(24, 8,
    (0, "fileName", Text(1024)),
    (8, "chunkOffset", U64),
    (16, "chunkSize", U64))
RECORDS["FileChunk"] = Record(32, 8,
    (None, "field1", NotOnWire()),
    (0, "fileName", Text(1024)),
    (8, "chunkOffset", U64),
    (16, "chunkSize", U64),
    (24, "data", Blob()))
RECORDS["ClientCertParams"] = Record(24, 4,
    (0, "field1", Text(16384)),
    (8, "field2", Text(16384)),
    (16, "field3", Flag()),
    (20, "field4", U32))
RECORDS["ClientCertInfo"] = Record(28, 4,
    (0, "field1", U32),
    (4, "field2", Text(16384)),
    (12, "field3", Text(16384)),
    (20, "field4", Optional(Text(128))),
    (None, "field5", NotOnWire()))
RECORDS["ClientCertsInfo"] = Record(8, 4,
    (0, "certs", List("ClientCertInfo", 10)))
RECORDS["VynUpdateIdentifier"] = Record(16, 1,
    (0, "bytes", Bytes16()))
RECORDS["VynUpdateIdentifierContainer"] = Record(8, 4,
    (0, "identifiers", Identifiers()))
RECORDS["VynSubscription"] = Record(12, 4,
    (0, "severity", I32),
    (4, "eventTypes", Names()))
RECORDS["VynSubscriptions"] = Record(48, 4,
    (0, "entries", Entries()))
RECORDS["VynSubscriptionsWithHash"] = Record(56, 8,
    (0, "hash", U64),
    (8, "subscriptions", Nested("VynSubscriptions")))
RECORDS["VynEvent"] = Record(136, 8,
    (0, "field1", EventText(128)),
    (8, "severity", EventSeverity()),
    (12, "field3", EventText(128)),
    (20, "field4", EventText(128)),
    (28, "field5", EventText(64)),
    (36, "field6", EventText(128)),
    (44, "field7", EventText(1024)),
    (52, "field8", U32),
    (56, "field9", U64),
    (64, "stringArray", EventTexts()))


# --- Messages ---


class Message:
    """A record laid out, to be left as it is or to be spoilt. `arena` may be NULL, UNSET or NONE in place of bytes."""

    def __init__(self, record, fields, start=0, limited=False):
        layout = Layout(start, limited)
        self.record = record
        RECORDS[record].write(layout, layout.wire, 0, "", fields)
        self.start, self.wire, self.arena = start, layout.wire, sorted(layout.arena, key=lambda cell: cell.offset)
        self.size = layout.top
        self.top = None
        self.without = None
        if not self.arena and record in ("VynConnectorSettings", "VynServerData", "DynamicAppInfo"):
            self.without = NONE

    def cell(self, path, meanings):
        found = [cell for cell in self.wire + self.arena if cell.path == path and cell.meaning in meanings]
        assert len(found) == 1, f"{self.record} has {len(found)} cells of {path}"
        return found[0]

    def pointer(self, path):
        return struct.unpack("<II", self.cell(path, ("pointer",)).data)

    def point(self, path, offset=None, size=None):
        old = self.pointer(path)
        new = (old[0] if offset is None else offset, old[1] if size is None else size)
        self.spoil(self.cell(path, ("pointer",)), struct.pack("<II", *new))

    def poke(self, path, value):
        cell = self.cell(path, ("number", "signed"))
        self.spoil(cell, value.to_bytes(len(cell.data), "little"))

    def fill_gaps(self, byte):
        for cell in self.arena:
            if cell.meaning == "padding":
                self.spoil(cell, byte * len(cell.data))

    @staticmethod
    def spoil(cell, data):
        cell.spoilt = cell.spoilt or cell.data != data
        cell.data = data

    def append(self, data, what):
        self.arena.append(Cell(self.size, data, "", what))
        self.size += len(data)

    @staticmethod
    def flat(cells):
        # A reader meets whatever was in the arena before; here it is zero.
        return bytes(byte or 0 for cell in cells for byte in cell.data)

    def read(self):
        """The decoded fields as this model reads them, and the event's status."""
        arena = self.without or self.flat(self.arena)
        received = Received(arena, self.size if self.top is None else self.top)
        value = RECORDS[self.record].read(self.flat(self.wire), received)
        return value, received.status


    def text_of_bytes(self):
        lines = [f"wire: {RECORDS[self.record].size} bytes", *text_of_cells(self.wire), ""]
        if self.without:
            return "\n".join([*lines, f"arena: {self.without}"])
        return "\n".join([*lines, f"arena: {self.size} bytes", *text_of_cells(self.arena)])


class Case:
    """A message, what is said about it, and what reading it must give: `fields` or `raises`, both chosen by hand."""

    def __init__(self, name, about, message, fields=None, raises=None, status="ok", encode=False):
        self.name, self.about, self.message = name, about, message
        self.fields, self.raises, self.status, self.encode = fields, raises, status, encode
        self.path = f"{message.record}/{name}.msg"
        self.verify()

    def verify(self):
        """What was chosen by hand is what this model reads, and what it would write."""
        record = RECORDS[self.message.record]
        try:
            value, status = self.message.read()
        except Raised as raised:
            expected = (self.raises.type, self.raises.seen) if self.raises else None
            assert (raised.type, raised.seen) == expected, (self.path, raised.seen, expected)
            return
        assert not self.raises, f"{self.path}: reads as {value}"
        shown, expected = record.show("", value), record.show("", self.fields)
        assert shown == expected, (self.path, shown, expected)
        assert status == self.status, (self.path, status)
        if self.encode:
            again = Message(self.message.record, value, self.message.start, limited=True)
            again.without = self.message.without
            assert again.text_of_bytes() == self.message.text_of_bytes(), f"{self.path}: would be written otherwise"

    def text(self):
        message = self.message
        lines = [f"# {line}" for line in self.about.splitlines()]
        lines.append(f"record: {message.record}")
        if message.start:
            lines.append(f"start: {message.start}")
        if message.top is not None:
            lines.append(f"top: {message.top}")
        lines.append(f"encode: {'yes' if self.encode else 'no'}")
        lines += ["", message.text_of_bytes(), ""]
        if self.raises:
            lines.append(f"raises: {self.raises.type}")
            shown = self.raises.seen
        else:
            lines.append("decoded:")
            shown = {"status": self.status} if message.record == "VynEvent" else {}
            shown.update(RECORDS[message.record].show("", self.fields))
        lines += [f"  {name} = {value}" for name, value in shown.items()]
        return "\n".join(lines) + "\n"


def text_of_cells(cells):
    rows = [line for cell in sorted(cells, key=lambda cell: cell.offset) for line in cell.lines()]
    width = max((len(data) for _, data, _ in rows), default=0)
    return [f"  {offset:04x}: {data:<{width}}  # {comment}" if comment else f"  {offset:04x}: {data}"
            for offset, data, comment in rows]
