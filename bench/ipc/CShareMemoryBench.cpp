#include <Orlix/ipc/CShareMemory.h>
#include <Orlix/ipc/IShareMemoryListener.h>
#include <Orlix/messaging/CMessageCenter.h>
#include <Orlix/messaging/IMessageCenterListener.h>

#include <benchmark/benchmark.h>

#include <boost/interprocess/ipc/message_queue.hpp>
#include <zmq.h>

#include <csignal>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <sched.h>
#include <semaphore.h>
#include <string>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/shm.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

// A block that one process hands over and another one takes into memory of its own and acknowledges, one at a time. All
// acknowledge by the same semaphore. Ours and the queue copy the block in and out; so does the floor, which is a
// segment with a semaphore in each direction.

using namespace Orlix;

namespace {

constexpr unsigned int SIZE_MOST = 4u << 20;

/** What both processes see. */
struct tagShared {
    sem_t semReady;
    sem_t semTaken;
    sem_t semFloor;
    unsigned char aryFloor[SIZE_MOST];
};

using PServe = void (*)(unsigned int uiSize);

/** The process that receives. It is forked by one that never has a second thread, which in turn was forked before this
 *  program had one; that one ends with this program. */
class CReceivers {
public:
    CReceivers() : m_pShared(makeShared()) {
        int arySocket[2];
        if (socketpair(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0, arySocket) != 0)
            std::abort();
        if (fork() == 0) {
            close(arySocket[0]);
            forkOnDemand(arySocket[1]);
        }
        close(arySocket[1]);
        m_iSocket = arySocket[0];
    }
    tagShared& getShared() const { return *m_pShared; }

    /** Returns when it is ready to receive. */
    void start(PServe fnServe, unsigned int uiSize) const {
        send({fnServe, uiSize});
        sem_wait(&m_pShared->semReady);
    }
    /** Kills it, and returns when it is gone. */
    void stop() const {
        send({nullptr, 0});
        sem_wait(&m_pShared->semReady);
    }

private:
    struct tagCommand {
        PServe fnServe; // null ends the process
        unsigned int uiSize;
    };
    tagShared* m_pShared;
    int m_iSocket = -1;

    static tagShared* makeShared() {
        void* const pBlock =
            mmap(nullptr, sizeof(tagShared), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
        if (pBlock == MAP_FAILED)
            std::abort();
        tagShared* const pShared = static_cast<tagShared*>(pBlock);
        for (sem_t* const pSemaphore : {&pShared->semReady, &pShared->semTaken, &pShared->semFloor})
            sem_init(pSemaphore, 1, 0);
        return pShared;
    }
    void send(const tagCommand& command) const {
        if (write(m_iSocket, &command, sizeof(command)) != sizeof(command))
            std::abort();
    }
    [[noreturn]] void forkOnDemand(int iSocket) const {
        pid_t pid = 0;
        for (tagCommand command; read(iSocket, &command, sizeof(command)) == sizeof(command);) {
            if (command.fnServe) {
                pid = fork();
                if (pid == 0) {
                    prctl(PR_SET_PDEATHSIG, SIGKILL);
                    command.fnServe(command.uiSize);
                    _exit(0);
                }
            } else {
                kill(pid, SIGKILL);
                waitpid(pid, nullptr, 0);
                sem_post(&m_pShared->semReady);
            }
        }
        _exit(0);
    }
};

// Names and keys of this run alone: taken before the fork, so that they are the same on both sides.
const int KEY = 0x50000000 | getpid();
const std::string NAME = "orlix-bench-" + std::to_string(getpid());
const std::string ADDRESS = "ipc://@" + NAME; // a name without a file
const CReceivers RECEIVERS;

void tellReady() { sem_post(&RECEIVERS.getShared().semReady); }
void tellTaken() { sem_post(&RECEIVERS.getShared().semTaken); }
void awaitTaken() { sem_wait(&RECEIVERS.getShared().semTaken); }

class OrlixWriter {
public:
    explicit OrlixWriter(unsigned int uiSize) {
        if (!m_channel.open(KEY, CShareMemory::MODE_WRITER, uiSize))
            std::abort();
        m_iSegmentID = shmget(KEY, 0, 0);
    }
    ~OrlixWriter() {
        m_channel.close();
        for (const char* const pPrefix : {"/super_read_", "/super_write_", "/super_event_"})
            sem_unlink((pPrefix + std::to_string(m_iSegmentID)).c_str());
    }
    void pass(const std::vector<unsigned char>& vecBlock) {
        while (!m_channel.writeData(vecBlock.data(), static_cast<unsigned int>(vecBlock.size())))
            sched_yield(); // the reader is still on its way out of its cycle
        awaitTaken();
    }
    static void serve(unsigned int uiSize) {
        CReader reader;
        reader.run(uiSize);
    }

private:
    CShareMemory m_channel;
    int m_iSegmentID;

    class CReader : public IMessageCenterListener, public IShareMemoryListener {
    public:
        CReader() {
            sem_init(&m_semMessage, 0, 0);
            CMessageCenter::getInstance()->setListener(this);
            m_channel.setListener(this);
        }
        void run(unsigned int uiSize) {
            m_vecBlock.resize(uiSize);
            if (!m_channel.open(KEY, CShareMemory::MODE_READER, uiSize))
                std::abort();
            tellReady();
            while (true) {
                if (const CObjectPtr<CBaseMessage> ptrMessage = CMessageCenter::getInstance()->popMessage())
                    ptrMessage->handleMessage();
                else
                    sem_wait(&m_semMessage);
            }
        }
        void onMessageAvailable() override { sem_post(&m_semMessage); }
        void onDataAvailable() override {
            m_channel.readData(m_vecBlock.data(), m_channel.getSize());
            tellTaken();
        }

    private:
        sem_t m_semMessage;
        std::vector<unsigned char> m_vecBlock;
        CShareMemory m_channel;
    };
};

class FloorWriter {
public:
    explicit FloorWriter(unsigned int) {}
    void pass(const std::vector<unsigned char>& vecBlock) {
        std::memcpy(RECEIVERS.getShared().aryFloor, vecBlock.data(), vecBlock.size());
        sem_post(&RECEIVERS.getShared().semFloor);
        awaitTaken();
    }
    static void serve(unsigned int uiSize) {
        std::vector<unsigned char> vecBlock(uiSize);
        tellReady();
        while (true) {
            sem_wait(&RECEIVERS.getShared().semFloor);
            std::memcpy(vecBlock.data(), RECEIVERS.getShared().aryFloor, uiSize);
            tellTaken();
        }
    }
};

class BoostWriter {
public:
    explicit BoostWriter(unsigned int) : m_queue(boost::interprocess::open_only, NAME.c_str()) {}
    ~BoostWriter() { boost::interprocess::message_queue::remove(NAME.c_str()); }
    void pass(const std::vector<unsigned char>& vecBlock) {
        m_queue.send(vecBlock.data(), vecBlock.size(), 0);
        awaitTaken();
    }
    static void serve(unsigned int uiSize) {
        boost::interprocess::message_queue::remove(NAME.c_str());
        boost::interprocess::message_queue queue(boost::interprocess::create_only, NAME.c_str(), 1, uiSize);
        std::vector<unsigned char> vecBlock(uiSize);
        tellReady();
        while (true) {
            boost::interprocess::message_queue::size_type uiReceived;
            unsigned int uiPriority;
            queue.receive(vecBlock.data(), uiSize, uiReceived, uiPriority);
            tellTaken();
        }
    }

private:
    boost::interprocess::message_queue m_queue;
};

class ZeroMQWriter {
public:
    explicit ZeroMQWriter(unsigned int) : m_pContext(zmq_ctx_new()), m_pSocket(zmq_socket(m_pContext, ZMQ_PUSH)) {
        if (zmq_connect(m_pSocket, ADDRESS.c_str()) != 0)
            std::abort();
    }
    ~ZeroMQWriter() {
        const int iLinger = 0;
        zmq_setsockopt(m_pSocket, ZMQ_LINGER, &iLinger, sizeof(iLinger));
        zmq_close(m_pSocket);
        zmq_ctx_term(m_pContext);
    }
    void pass(const std::vector<unsigned char>& vecBlock) {
        zmq_send(m_pSocket, vecBlock.data(), vecBlock.size(), 0);
        awaitTaken();
    }
    static void serve(unsigned int) {
        void* const pContext = zmq_ctx_new();
        void* const pSocket = zmq_socket(pContext, ZMQ_PULL);
        if (zmq_bind(pSocket, ADDRESS.c_str()) != 0)
            std::abort();
        tellReady();
        while (true) {
            zmq_msg_t message;
            zmq_msg_init(&message);
            zmq_msg_recv(&message, pSocket, 0); // which hands its own block over, without a copy
            tellTaken();
            zmq_msg_close(&message);
        }
    }

private:
    void* m_pContext;
    void* m_pSocket;
};

template <class TWriter> void handOver(benchmark::State& state) {
    const unsigned int uiSize = static_cast<unsigned int>(state.range(0));
    const std::vector<unsigned char> vecBlock(uiSize, 'x');
    RECEIVERS.start(TWriter::serve, uiSize);
    {
        TWriter writer(uiSize);
        for (auto _ : state)
            writer.pass(vecBlock);
        RECEIVERS.stop();
    }
    state.SetBytesProcessed(state.iterations() * state.range(0));
}

template <class TWriter> bool registerWriter(const std::string& strName) {
    for (const int iSize : {64, 64 << 10, 4 << 20})
        benchmark::RegisterBenchmark((strName + "_handOver").c_str(), handOver<TWriter>)->Arg(iSize)->UseRealTime();
    return true;
}

[[maybe_unused]] const bool REGISTERED =
    registerWriter<OrlixWriter>("CShareMemory") && registerWriter<FloorWriter>("Floor") &&
    registerWriter<BoostWriter>("BoostMessageQueue") && registerWriter<ZeroMQWriter>("ZeroMQ");
} // namespace
