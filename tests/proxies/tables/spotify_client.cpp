#include "spotify/clientproxy.h"
#include "tables.h"

using namespace Sample;

ProxyTable spotifyClientProxy(const QDBusConnection &connection)
{
    using Proxy = Spotify::ClientProxy;
    const auto p = std::make_shared<Proxy>(nullptr, connection);
    constexpr auto wait = QDBus::Block;
    return {"Spotify::ClientProxy",
            p,
            {
                {"PlaybackStart", Shape::Command, "", {}, returning([p] { p->PlaybackStart(wait); })},
                {"PlaybackPause", Shape::Command, "", {}, returning([p] { p->PlaybackPause(wait); })},
                {"SkipToNext", Shape::Command, "", {}, returning([p] { p->SkipToNext(wait); })},
                {"SkipToPrev", Shape::Command, "", {}, returning([p] { p->SkipToPrev(wait); })},
                {"PlaybackState", Shape::Text, "", {}, returning([p] { return p->PlaybackState(wait); })},
                {"IsActive", Shape::Flag, "", {}, returning([p] { return p->IsActive(wait); })},
                {"Metadata", Shape::Map, "", {}, returning([p] { return p->Metadata(wait); })},
            },
            {
                subscription("PlaybackStateChanged", {text}, p, &Proxy::connectPlaybackStateChanged, &Proxy::disconnectPlaybackStateChanged),
                subscription("IsActiveChanged", {flag}, p, &Proxy::connectIsActiveChanged, &Proxy::disconnectIsActiveChanged),
                subscription("MetaDataChanged", {map}, p, &Proxy::connectMetaDataChanged, &Proxy::disconnectMetaDataChanged),
            }};
}
