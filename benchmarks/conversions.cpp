#include "conversions.h"

#include "floor.h"
#include "peers/peers.h"
#include "records.h"
#include "this_library.h"

namespace bench {

namespace {

template <typename Record>
void Add(Conversions& conversions, const std::string& name, const std::vector<Record>& records)
{
    AddThisLibrary(conversions, name, records);
    AddCodec<Record>(conversions, name, "floor", records, std::make_shared<Floor<Record>>());
}

template <typename Record>
void AddWithPeers(Conversions& conversions, const std::string& name, const std::vector<Record>& records)
{
    Add(conversions, name, records);
    for (const Peer& peer : Peers())
        AddCodec(conversions, name, peer.name, records, peer.For<Record>());
}

} // namespace

void AddRecords(Conversions& conversions)
{
    AddWithPeers<ServerConnectionParameters>(conversions, "A", {Server()});
    AddWithPeers<AppInfo>(conversions, "B", {App()});
    AddWithPeers<FileChunk>(conversions, "C", {Chunk()});
    AddWithPeers<Parameters>(conversions, "D", {ParameterList(1000)});
    Add<VynSubscriptions>(conversions, "subscriptions", {Subscriptions(128)});
    Add<VynUpdateIdentifiers>(conversions, "identifiers", {Identifiers()});
    Add<VynEvent>(conversions, "event", {Event()});
}

// So many that a processor cannot learn one record's lengths by heart.
void AddRandomLengths(Conversions& conversions)
{
    RandomLengths random;
    AddWithPeers(conversions, "A random", random.Like(Server(), 128));
    AddWithPeers(conversions, "B random", random.Like(App(), 128));
    AddWithPeers(conversions, "D random", random.Like(ParameterList(1000), 4));
    Add(conversions, "event random", random.Like(Event(), 128));
}

} // namespace bench
