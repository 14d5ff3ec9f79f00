// A host of the module in a page: a stream of RTP packets is protected, loses every fiftieth packet on its
// way, and is repaired. All in one graph; the host is the network between its two halves.
//
//     source "Out 1" -> "Input" sender "FECA" -> "In 1" FEC sink
//                                      "FECB" -> "In 2"
//     source "Out 2" -> "Input #1"             what is received comes through a packet guard
//     source "Out 3" -> "Input #2" receiver "Output" -> "In 1" media sink
//     source "Out 4" -> "Input #3"
//
// On Windows a registered module's filters also come from CoCreateInstance.

#include <array>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <initializer_list>
#include <stdexcept>
#include <string>

#include <mvrtpfec/receiver_guard.h>
#include <mvrtpfec/rtp_fec_filter.h>
#include <mvrtpfec/rtp_fec_in.h>
#include <platform/component/component_runtime.h>
#include <platform/module/loaded_module.h>
#include <platform/wide_literal.h>

#include "packet_filters.h"

using namespace example;
using platform::operator""_w;

namespace {

void require(HRESULT result, const char* action) {
    if (FAILED(result)) throw std::runtime_error(std::string(action) + " failed");
}

CComPtr<IBaseFilter> createFilter(const platform::LoadedModule& module, REFCLSID classId) {
    CComPtr<IClassFactory> factory;
    CComPtr<IBaseFilter> filter;
    require(module.getClassObject(classId, IID_IClassFactory, reinterpret_cast<void**>(&factory)),
            "finding a class");
    require(factory->CreateInstance(nullptr, IID_IBaseFilter, reinterpret_cast<void**>(&filter)),
            "the filter");
    return filter;
}

void connect(IGraphBuilder* graph, IBaseFilter* from, LPCWSTR output, IBaseFilter* to, LPCWSTR input) {
    CComPtr<IPin> source;
    CComPtr<IPin> target;
    require(from->FindPin(output, &source), "finding an output pin");
    require(to->FindPin(input, &target), "finding an input pin");
    require(graph->ConnectDirect(source, target, nullptr), "connecting");
}

/// Seven transport packets behind an RTP header of payload type 33.
std::array<std::uint8_t, 1328> packet(std::uint16_t number) {
    std::array<std::uint8_t, 1328> bytes{0x80, 33};
    bytes[2] = static_cast<std::uint8_t>(number >> 8);
    bytes[3] = static_cast<std::uint8_t>(number);
    for (std::size_t ts = 12; ts < bytes.size(); ts += 188) bytes[ts] = 0x47;
    return bytes;
}

void run(const char* modulePath) {
    const platform::LoadedModule module(modulePath);
    const auto sender = createFilter(module, CLSID_RtpFecFilter);
    const auto receiver = createFilter(module, CLSID_RtpFecIn);
    HRESULT result = S_OK;
    const CComPtr<PacketSource> source(new PacketSource(4, &result));
    // In front of the receiver's inputs; a host may also push into them itself.
    HRESULT taken = S_OK;
    mvrtpfec::ReceiverGuard guard([&](mvrtpfec::ReceiverInput input, Packet bytes) {
        const HRESULT pushed = source->push(1 + static_cast<std::size_t>(input), bytes);
        if (FAILED(pushed)) taken = pushed;
    });
    const auto receive = [&](std::size_t, Packet bytes) { return guard.push(bytes), taken; };
    const CComPtr<PacketSink> fec(new PacketSink(2, receive, &result));
    std::atomic<unsigned> delivered{0};
    const auto count = [&](std::size_t, Packet) { return ++delivered, S_OK; };
    const CComPtr<PacketSink> media(new PacketSink(1, count, &result));
    require(result, "making the host's filters");

    const auto matrix = queryFor<IFECoverRTPConfig>(sender, IID_IFECoverRTPConfig);
    require(matrix->SetMode(3), "setting row and column FEC");
    require(matrix->SetColumns(10), "setting the columns");
    require(matrix->SetRows(5), "setting the rows");

    CComPtr<IGraphBuilder> graph;
    require(platform::createFilterGraph(&graph), "creating the graph");
    for (IBaseFilter* filter : std::initializer_list<IBaseFilter*>{source, sender, fec, receiver, media})
        require(graph->AddFilter(filter, nullptr), "adding a filter");
    connect(graph, source, "Out 1"_w, sender, "Input"_w);
    connect(graph, sender, "FECA"_w, fec, "In 1"_w);
    connect(graph, sender, "FECB"_w, fec, "In 2"_w);
    connect(graph, source, "Out 2"_w, receiver, "Input #1"_w);
    connect(graph, source, "Out 3"_w, receiver, "Input #2"_w);
    connect(graph, source, "Out 4"_w, receiver, "Input #3"_w);
    connect(graph, receiver, "Output"_w, media, "In 1"_w);

    const auto control = queryFor<IMediaControl>(graph, IID_IMediaControl);
    require(control->Run(), "running");
    for (std::uint16_t number = 0; number < 1000; ++number) {
        require(source->push(0, packet(number)), "protecting a packet");
        if (number % 50 != 49) guard.push(packet(number));
    }

    guard.flush();
    require(taken, "receiving a packet");

    std::uint64_t lost = 0, rebuilt = 0, abandoned = 0, received = 0;
    const auto statistics = queryFor<IRtpFecInConfig>(receiver, IID_IRtpFecInConfig);
    require(statistics->GetStatistics(&lost, &rebuilt, &abandoned, &received), "reading the statistics");
    // The last window, twice columns x rows packets, is still in the receiver; Stop drops it.
    control->Stop();
    std::printf("received %u, lost %u, rebuilt %u, abandoned %u, delivered %u\n",
                static_cast<unsigned>(received), static_cast<unsigned>(lost), static_cast<unsigned>(rebuilt),
                static_cast<unsigned>(abandoned), delivered.load());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: graph_host PATH/MVRtpFec.ax\n");
        return 2;
    }
    try {
        const platform::ComponentRuntime runtime;
        run(argv[1]);
        return 0;
    } catch (const std::exception& error) {
        std::fprintf(stderr, "graph_host: %s\n", error.what());
        return 1;
    }
}
