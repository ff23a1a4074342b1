// The serializers that this library is compared with. Each gets the same owned records and gives back owned records;
// what it needs in between, builders and messages of its own, is in its time, and used again where it allows that.
#pragma once

#include "../conversion.h"
#include "../records.h"

namespace bench {

struct Peer {
    std::string name;
    std::tuple<std::shared_ptr<Codec<ServerConnectionParameters>>, std::shared_ptr<Codec<AppInfo>>,
               std::shared_ptr<Codec<FileChunk>>, std::shared_ptr<Codec<Parameters>>>
        codecs;

    template <typename Record>
    std::shared_ptr<Codec<Record>> For() const
    {
        return std::get<std::shared_ptr<Codec<Record>>>(codecs);
    }
};

// For a peer whose codecs are made from one template.
template <template <typename> typename CodecOf>
Peer MakePeer(const char* name)
{
    return {name,
            {std::make_shared<CodecOf<ServerConnectionParameters>>(), std::make_shared<CodecOf<AppInfo>>(),
             std::make_shared<CodecOf<FileChunk>>(), std::make_shared<CodecOf<Parameters>>()}};
}

Peer ProtocolBuffers();
Peer FlatBuffers();
Peer CapnProto();
Peer Cereal();
Peer MessagePack();

// Built where their headers were found.
Peer ZppBits();
Peer StructPack();
Peer Bitsery();

std::vector<Peer> Peers();

} // namespace bench
