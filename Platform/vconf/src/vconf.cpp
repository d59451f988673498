#include "vconf.h"

#include <Ecore.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fcntl.h>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

extern const char* const vconf_schema_text;

struct _keynode_t {
    std::string name;
    int type = VCONF_TYPE_NONE;
    int value = 0;
};

namespace {

struct SchemaKey {
    std::string key;
    int type;
    int value;
};

const std::vector<SchemaKey>& Schema()
{
    static const std::vector<SchemaKey> keys = [] {
        std::vector<SchemaKey> out;
        std::istringstream text(vconf_schema_text);
        std::string line;
        while (std::getline(text, line)) {
            std::istringstream fields(line);
            std::string type, key;
            int value = 0;
            if (!(fields >> type >> key >> value) || type[0] == '#')
                continue;
            out.push_back({key, type == "bool" ? VCONF_TYPE_BOOL : VCONF_TYPE_INT, value});
        }
        return out;
    }();
    return keys;
}

const SchemaKey* FindSchema(const std::string& key)
{
    for (const SchemaKey& k : Schema())
        if (k.key == key)
            return &k;
    return nullptr;
}

std::string Root()
{
    const char* root = getenv("VCONF_ROOT");
    if (root && *root)
        return root;
    const char* runtime = getenv("XDG_RUNTIME_DIR");
    if (runtime && *runtime)
        return std::string(runtime) + "/vconf";
    return "/tmp/vconf-" + std::to_string(getuid());
}

// Relative, no empty, "." or hidden parts: temporary files start with a dot.
bool ValidKey(const char* key)
{
    if (!key || !*key || key[0] == '/')
        return false;
    const char* part = key;
    for (const char* p = key;; ++p) {
        if (*p == '/' || *p == '\0') {
            if (p == part || *part == '.')
                return false;
            if (*p == '\0')
                return true;
            part = p + 1;
        }
    }
}

std::string PathOf(const char* key)
{
    return Root() + "/" + key;
}

bool MakeDirs(const std::string& dir)
{
    for (size_t at = 1; at <= dir.size(); ++at) {
        if (at != dir.size() && dir[at] != '/')
            continue;
        std::string part = dir.substr(0, at);
        if (mkdir(part.c_str(), 0755) != 0 && errno != EEXIST)
            return false;
    }
    return true;
}

// The stored value, else the schema's default.
bool Read(const char* key, int* type, int* value)
{
    if (!ValidKey(key))
        return false;
    FILE* f = fopen(PathOf(key).c_str(), "r");
    if (f) {
        char name[8] = {};
        int v = 0;
        const bool ok = fscanf(f, "%7s %d", name, &v) == 2;
        fclose(f);
        if (!ok)
            return false;
        if (strcmp(name, "int") == 0)
            *type = VCONF_TYPE_INT;
        else if (strcmp(name, "bool") == 0)
            *type = VCONF_TYPE_BOOL;
        else
            return false;
        *value = v;
        return true;
    }
    const SchemaKey* k = FindSchema(key);
    if (!k)
        return false;
    *type = k->type;
    *value = k->value;
    return true;
}

int Get(const char* key, int type, int* out)
{
    int storedType = VCONF_TYPE_NONE;
    int value = 0;
    if (!out || !Read(key, &storedType, &value) || storedType != type)
        return VCONF_ERROR;
    *out = value;
    return VCONF_OK;
}

int Set(const char* key, int type, int value)
{
    if (!ValidKey(key))
        return VCONF_ERROR;
    const SchemaKey* k = FindSchema(key);
    if (k && k->type != type)
        return VCONF_ERROR;
    static std::atomic<unsigned> counter{0};
    const std::string path = PathOf(key);
    const size_t slash = path.rfind('/');
    const std::string dir = path.substr(0, slash);
    if (!MakeDirs(dir))
        return VCONF_ERROR;
    const std::string temp = dir + "/." + path.substr(slash + 1) + "." + std::to_string(getpid()) + "." +
                             std::to_string(counter.fetch_add(1)) + ".tmp";
    int fd = open(temp.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0644);
    if (fd < 0)
        return VCONF_ERROR;
    const std::string text = std::string(type == VCONF_TYPE_BOOL ? "bool " : "int ") + std::to_string(value) + "\n";
    const bool written = write(fd, text.data(), text.size()) == static_cast<ssize_t>(text.size());
    if (close(fd) != 0 || !written || rename(temp.c_str(), path.c_str()) != 0) {
        unlink(temp.c_str());
        return VCONF_ERROR;
    }
    return VCONF_OK;
}

// --- Watching -----------------------------------------------------------------

struct Watch {
    std::string path;  // absolute file of the key
    std::string key;
    vconf_callback_fn cb;
    void* data;
};

struct Watcher {
    std::mutex lock;
    int fd = -1;
    std::map<int, std::string> dirOfWd;
    std::vector<Watch> watches;
    Ecore_Fd_Handler* pHandler = nullptr;  // main loop only
};

Watcher& W()
{
    static Watcher* w = new Watcher();  // outlives every static user
    return *w;
}

Eina_Bool OnInotify_Cb(void*, Ecore_Fd_Handler*);

// Main loop: an fd handler (and an Ecore reference) exactly while keys are watched.
void SyncHandler()
{
    Watcher& w = W();
    std::unique_lock<std::mutex> guard(w.lock);
    const bool want = !w.watches.empty();
    if (want && !w.pHandler) {
        const int fd = w.fd;
        guard.unlock();
        ecore_init();
        Ecore_Fd_Handler* pHandler = ecore_main_fd_handler_add(fd, ECORE_FD_READ, OnInotify_Cb, nullptr, nullptr, nullptr);
        guard.lock();
        w.pHandler = pHandler;
    } else if (!want && w.pHandler) {
        Ecore_Fd_Handler* pHandler = w.pHandler;
        w.pHandler = nullptr;
        guard.unlock();
        ecore_main_fd_handler_del(pHandler);
        ecore_shutdown();
    }
}

void SyncHandler_Cb(void*)
{
    SyncHandler();
}

void RequestSync()
{
    if (eina_main_loop_is())
        SyncHandler();
    else
        ecore_main_loop_thread_safe_call_async(SyncHandler_Cb, nullptr);
}

bool StillWatched(const Watch& watch)
{
    Watcher& w = W();
    std::lock_guard<std::mutex> guard(w.lock);
    for (const Watch& x : w.watches)
        if (x.path == watch.path && x.cb == watch.cb && x.data == watch.data)
            return true;
    return false;
}

Eina_Bool OnInotify_Cb(void*, Ecore_Fd_Handler*)
{
    Watcher& w = W();
    std::vector<std::string> changed;
    {
        std::lock_guard<std::mutex> guard(w.lock);
        alignas(struct inotify_event) char buf[8192];
        ssize_t n;
        while ((n = read(w.fd, buf, sizeof buf)) > 0) {
            for (char* p = buf; p < buf + n;) {
                const struct inotify_event* ev = reinterpret_cast<const struct inotify_event*>(p);
                p += sizeof(struct inotify_event) + ev->len;
                auto dir = w.dirOfWd.find(ev->wd);
                if (ev->len == 0 || dir == w.dirOfWd.end())
                    continue;
                std::string path = dir->second + "/" + ev->name;
                bool seen = false;
                for (const std::string& c : changed)
                    seen = seen || c == path;
                if (!seen)
                    changed.push_back(path);
            }
        }
    }
    for (const std::string& path : changed) {
        std::vector<Watch> targets;
        {
            std::lock_guard<std::mutex> guard(w.lock);
            for (const Watch& x : w.watches)
                if (x.path == path)
                    targets.push_back(x);
        }
        for (const Watch& x : targets) {
            // An earlier callback may have removed this one.
            if (!StillWatched(x))
                continue;
            _keynode_t node;
            node.name = x.key;
            if (!Read(x.key.c_str(), &node.type, &node.value))
                continue;
            x.cb(&node, x.data);
        }
    }
    return ECORE_CALLBACK_RENEW;
}

}  // namespace

extern "C" {

int vconf_get_int(const char* in_key, int* intval)
{
    return Get(in_key, VCONF_TYPE_INT, intval);
}

int vconf_get_bool(const char* in_key, int* boolval)
{
    return Get(in_key, VCONF_TYPE_BOOL, boolval);
}

int vconf_set_int(const char* in_key, const int intval)
{
    return Set(in_key, VCONF_TYPE_INT, intval);
}

int vconf_set_bool(const char* in_key, const int boolval)
{
    return Set(in_key, VCONF_TYPE_BOOL, boolval ? 1 : 0);
}

int vconf_notify_key_changed(const char* in_key, vconf_callback_fn cb, void* user_data)
{
    if (!ValidKey(in_key) || !cb)
        return VCONF_ERROR;
    const std::string path = PathOf(in_key);
    const std::string dir = path.substr(0, path.rfind('/'));
    if (!MakeDirs(dir))
        return VCONF_ERROR;
    Watcher& w = W();
    {
        std::lock_guard<std::mutex> guard(w.lock);
        if (w.fd < 0)
            w.fd = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
        if (w.fd < 0)
            return VCONF_ERROR;
        // Writers rename into place; a deletion brings the default back.
        const int wd = inotify_add_watch(w.fd, dir.c_str(), IN_MOVED_TO | IN_CLOSE_WRITE | IN_DELETE);
        if (wd < 0)
            return VCONF_ERROR;
        w.dirOfWd[wd] = dir;
        bool replaced = false;
        for (Watch& x : w.watches) {
            if (x.path == path && x.cb == cb) {
                x.data = user_data;
                replaced = true;
            }
        }
        if (!replaced)
            w.watches.push_back({path, in_key, cb, user_data});
    }
    RequestSync();
    return VCONF_OK;
}

int vconf_ignore_key_changed(const char* in_key, vconf_callback_fn cb)
{
    if (!ValidKey(in_key) || !cb)
        return VCONF_ERROR;
    const std::string path = PathOf(in_key);
    Watcher& w = W();
    {
        std::lock_guard<std::mutex> guard(w.lock);
        bool found = false;
        for (auto it = w.watches.begin(); it != w.watches.end();) {
            if (it->path == path && it->cb == cb) {
                it = w.watches.erase(it);
                found = true;
            } else {
                ++it;
            }
        }
        if (!found)
            return VCONF_ERROR;
        // Watches on a folder stay until no key in it is watched.
        const std::string dir = path.substr(0, path.rfind('/'));
        bool dirUsed = false;
        for (const Watch& x : w.watches)
            dirUsed = dirUsed || (x.path.compare(0, dir.size() + 1, dir + "/") == 0 &&
                                  x.path.find('/', dir.size() + 1) == std::string::npos);
        for (auto it = w.dirOfWd.begin(); !dirUsed && it != w.dirOfWd.end(); ++it) {
            if (it->second == dir) {
                inotify_rm_watch(w.fd, it->first);
                w.dirOfWd.erase(it);
                break;
            }
        }
    }
    RequestSync();
    return VCONF_OK;
}

char* vconf_keynode_get_name(keynode_t* keynode)
{
    return keynode ? const_cast<char*>(keynode->name.c_str()) : nullptr;
}

int vconf_keynode_get_type(keynode_t* keynode)
{
    return keynode ? keynode->type : VCONF_TYPE_NONE;
}

int vconf_keynode_get_int(const keynode_t* keynode)
{
    return keynode && keynode->type == VCONF_TYPE_INT ? keynode->value : VCONF_ERROR;
}

int vconf_keynode_get_bool(const keynode_t* keynode)
{
    return keynode && keynode->type == VCONF_TYPE_BOOL ? keynode->value : VCONF_ERROR;
}

const char* vconf_store_root(void)
{
    thread_local std::string root;
    root = Root();
    return root.c_str();
}

const char* vconf_schema_key(int index, int* type)
{
    const std::vector<SchemaKey>& keys = Schema();
    if (index < 0 || index >= static_cast<int>(keys.size()))
        return nullptr;
    if (type)
        *type = keys[index].type;
    return keys[index].key.c_str();
}

}  // extern "C"
