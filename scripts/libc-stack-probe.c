/* SPDX-License-Identifier: MIT */
/* Measures how much stack each C library call the library makes uses, on
 * the machine it runs on (built for armhf and run under qemu-arm by
 * scripts/size-report.sh): every call runs on a fresh thread whose 64 KiB
 * stack is painted first and scanned afterwards; the figure is the deepest
 * byte touched less that of an empty call. Prints "name bytes" lines for
 * scripts/stack-report.py. Runs inside the test sandbox (it makes a
 * directory under /tmp, starts "true" through the shell, opens sockets). */
#define _GNU_SOURCE
#include <ctype.h>
#include <errno.h>
#include <fcntl.h>
#include <netdb.h>
#include <arpa/inet.h>
#include <net/if.h>
#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <stdarg.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/file.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>
#include <sys/socket.h>
#include <dirent.h>
#include <sys/select.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/sysinfo.h>
#include <sys/time.h>
#include <sys/times.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <setjmp.h>
#include <time.h>
#include <unistd.h>

#define STACK (64 * 1024)
#define PAINT 0x5Au

static volatile uint64_t sink64;
static volatile uint32_t sink32;
static volatile int64_t ssink64;
static char text[256];

static void p_empty(void) {}
static void p_snprintf(void) { snprintf(text, sizeof text, "%s %d %u %x %02x %lu %s", "a", -1, 2u, 3u, 4u, 5ul, "b"); }
static void p_sprintf(void) { sprintf(text, "%s %d %u", "a", -1, 2u); }
static int vs(const char *f, ...) { va_list ap; va_start(ap, f); int n = vsnprintf(text, sizeof text, f, ap); va_end(ap); return n; }
static void p_vsnprintf(void) { vs("%s %d %u %x %lu", "a", -1, 2u, 3u, 5ul); }
static int vf(const char *f, ...) { va_list ap; va_start(ap, f); int n = vfprintf(stderr, f, ap); va_end(ap); return n; }
static void p_vfprintf(void) { vf("%s[%s:%s:%d]%s", "", "f", "g", 1, "\r"); }
static void p_fprintf(void) { fprintf(stderr, "%s[%s:%d]%s", "", "f", 1, "\r"); }
static void p_printf(void) { printf("%s %d\r", "x", 1); fflush(stdout); }
static void p_puts(void) { puts("\r"); }
static void p_fputs(void) { fputs("\r", stderr); }
static void p_fputc(void) { fputc('\r', stderr); }
static void p_fflush(void) { printf("\r"); fflush(stdout); }
static void p_file(void) {
    FILE *f = fopen("/proc/meminfo", "r");
    if (f) { char l[512]; while (fgets(l, sizeof l, f)) {} fclose(f); }
}
static void p_fscanf(void) {
    FILE *f = fopen("/proc/meminfo", "r");
    if (f) { char k[64]; unsigned long v; if (fscanf(f, "%63s %lu", k, &v) != 2) sink32 = 1; fclose(f); }
}
static void p_sscanf(void) { int a, b; char s[32]; sink32 = (uint32_t)sscanf("12 0x1f abc", "%d %x %31s", &a, &b, s); }
static void p_popen(void) {
    FILE *p = popen("true", "r");
    if (p) { char l[128]; while (fgets(l, sizeof l, p)) {} pclose(p); }
}
static void p_system(void) { sink32 = (uint32_t)system("true"); }
static void p_mkdir(void) { mkdir("/tmp/qvs-stack-probe", 0755); rmdir("/tmp/qvs-stack-probe"); }
static void p_access(void) { sink32 = (uint32_t)access("/tmp", F_OK); }
static void p_readlink(void) { char b[256]; sink32 = (uint32_t)readlink("/proc/self/exe", b, sizeof b); }
static void p_strings(void) {
    char a[64] = "Hello World, hello", b[64];
    strcpy(b, a); strncpy(b, a, sizeof b); strncat(b, "x", 2);
    sink32 = (uint32_t)(strlen(a) + strnlen(a, 10) + (size_t)strcmp(a, b) + (size_t)strncmp(a, b, 3) +
                        (size_t)strncasecmp(a, "hello", 5) + strcspn(a, ",") + (size_t)(strchr(a, 'W') - a) +
                        (size_t)(strstr(a, "hello") - a));
    memset(b, 0, sizeof b); memcpy(b, a, 10); memmove(b + 1, b, 10);
    sink32 += (uint32_t)memcmp(a, b, 5) + (uint32_t)(memchr(a, 'o', 20) != NULL);
    sink32 += (uint32_t)tolower('A') + (uint32_t)isspace(' ') + (uint32_t)isxdigit('f');
    sink32 += (uint32_t)(*__errno_location());
}
static void p_strtok(void) { char a[] = "a,b;c"; for (char *t = strtok(a, ",;"); t; t = strtok(NULL, ",;")) sink32++; }
static void p_strtok_r(void) { char a[] = "a,b;c", *s; for (char *t = strtok_r(a, ",;", &s); t; t = strtok_r(NULL, ",;", &s)) sink32++; }
static void p_strtol(void) { sink64 = (uint64_t)strtol("-12345", NULL, 10) + (uint64_t)strtoll("0x7fffffffffff", NULL, 16); }
static void p_strtod(void) { sink64 = (uint64_t)(strtod("3.25e2", NULL) * 4); }
static void p_strdup(void) { char *p = strdup("abc"); free(p); }
static void p_malloc(void) { void *p = malloc(3000); void *q = calloc(10, 100); p = realloc(p, 5000); free(q); free(p); }
static void p_time(void) {
    time_t t = time(NULL); struct tm tm; char b[64];
    localtime_r(&t, &tm); strftime(b, sizeof b, "%Y-%m-%dT%H:%M:%S", &tm);
    sink64 = (uint64_t)mktime(&tm);
    struct tms x; sink64 += (uint64_t)times(&x) + (uint64_t)sysconf(_SC_CLK_TCK);
}
static void p_sockets(void) {
    int s = socket(AF_UNIX, SOCK_DGRAM, 0);
    struct sockaddr_un a; memset(&a, 0, sizeof a); a.sun_family = AF_UNIX;
    strcpy(a.sun_path, "/tmp/qvs-stack-probe.sock");
    connect(s, (struct sockaddr *)&a, sizeof a);
    send(s, "x", 1, MSG_DONTWAIT);
    char b[16]; recvfrom(s, b, sizeof b, MSG_DONTWAIT, NULL, NULL);
    struct pollfd p = {s, POLLIN, 0}; poll(&p, 1, 0);
    struct ifreq r; memset(&r, 0, sizeof r); strcpy(r.ifr_name, "lo"); ioctl(s, SIOCGIFHWADDR, &r);
    close(s);
    sink32 = inet_addr("192.168.1.1");
}
static void p_getaddrinfo(void) {
    struct addrinfo h, *r = NULL; memset(&h, 0, sizeof h); h.ai_socktype = SOCK_STREAM;
    if (getaddrinfo("localhost", "80", &h, &r) == 0) freeaddrinfo(r);
}
static void p_sigqueue(void) { union sigval v; v.sival_int = 0; sigqueue(getpid(), 0, v); }
static void p_division(void) {
    volatile uint64_t a = 0x123456789abcull, b = 7; volatile int64_t c = -0x123456789ab, d = 9; volatile uint32_t e = 1000, f = 7;
    sink64 = a / b + a % b; ssink64 = c / d + c % d; sink32 = e / f + e % f;
}

static void p_files2(void) {
    FILE *f = fopen("/tmp/qvs-stack-probe.txt", "w+");
    if (f) {
        fwrite("line one\nline two\n", 1, 18, f); fseek(f, 0, SEEK_SET); sink32 = (uint32_t)ftell(f);
        char b[32]; sink32 += (uint32_t)fread(b, 1, sizeof b, f); rewind(f); sink32 += (uint32_t)fgetc(f);
        ungetc('l', f); sink32 += (uint32_t)fileno(f);
        char *line = NULL; size_t n = 0; sink32 += (uint32_t)getline(&line, &n, f); free(line);
        fclose(f);
    }
    rename("/tmp/qvs-stack-probe.txt", "/tmp/qvs-stack-probe.2"); struct stat st; stat("/tmp/qvs-stack-probe.2", &st);
    int fd = open("/tmp/qvs-stack-probe.2", O_RDWR); char c; read(fd, &c, 1); write(fd, "x", 1);
    FILE *g = fdopen(fd, "r"); if (g) fclose(g); else close(fd);
    unlink("/tmp/qvs-stack-probe.2"); remove("/tmp/qvs-stack-probe.none");
}
static void p_dirs(void) { DIR *d = opendir("/proc/self"); if (d) { while (readdir(d)) {} closedir(d); } }
static void p_misc(void) {
    char a[] = "a/b/c";
    sink32 = (uint32_t)(strrchr(a, '/') - a) + (uint32_t)strcasecmp("Ab", "aB") + (uint32_t)atoi("42") +
             (uint32_t)strtoul("0xff", NULL, 16) + (uint32_t)toupper('a') + (uint32_t)abs(-3);
    char *s = a; sink32 += (uint32_t)strlen(strsep(&s, "/"));
    sink32 += (uint32_t)strlen(strerror(ENOENT));
    sink32 += (uint32_t)getpid(); kill(getpid(), 0); raise(0);
}
static int cmp(const void *x, const void *y) { return *(const int *)x - *(const int *)y; }
static void p_sort(void) { int v[64]; for (int i = 0; i < 64; ++i) v[i] = 64 - i; qsort(v, 64, sizeof v[0], cmp); int k = 5; sink32 = bsearch(&k, v, 64, sizeof v[0], cmp) != NULL; }
static void p_time2(void) {
    time_t t = time(NULL); struct tm tm; gmtime_r(&t, &tm); sink32 = (uint32_t)localtime(&t)->tm_hour;
    struct timeval tv; gettimeofday(&tv, NULL);
}
static void p_sys(void) {
    struct statvfs v; statvfs("/", &v); struct sysinfo si; sysinfo(&si);
    sink64 = v.f_blocks + si.totalram;
}
static void p_perror(void) { errno = 0; perror("\r"); }
static void p_files3(void) {
    FILE *f = fopen("/tmp/qvs-stack-probe.3", "w");
    if (f) { fputs("abc\n", f); sink32 = (uint32_t)ferror(f); struct stat st; fstat(fileno(f), &st); fclose(f); }
    truncate("/tmp/qvs-stack-probe.3", 1);
    unlink("/tmp/qvs-stack-probe.3");
    char b[16] = "a"; strcat(b, "bc"); sink32 += (uint32_t)strlen(b);
}
/* The fortified forms a hardened build calls instead (_FORTIFY_SOURCE=3
 * passes flag 2), declared here: this probe is built without FORTIFY. */
int __snprintf_chk(char *, size_t, int, size_t, const char *, ...);
int __sprintf_chk(char *, int, size_t, const char *, ...);
int __vsnprintf_chk(char *, size_t, int, size_t, const char *, va_list);
int __vfprintf_chk(FILE *, int, const char *, va_list);
int __fprintf_chk(FILE *, int, const char *, ...);
int __printf_chk(int, const char *, ...);
void *__memcpy_chk(void *, const void *, size_t, size_t);
void *__memmove_chk(void *, const void *, size_t, size_t);
void *__memset_chk(void *, int, size_t, size_t);
char *__strcpy_chk(char *, const char *, size_t);
char *__strncpy_chk(char *, const char *, size_t, size_t);
char *__strcat_chk(char *, const char *, size_t);
char *__strncat_chk(char *, const char *, size_t, size_t);
char *__fgets_chk(char *, size_t, int, FILE *);
size_t __fread_chk(void *, size_t, size_t, size_t, FILE *);
ssize_t __read_chk(int, void *, size_t, size_t);
ssize_t __readlink_chk(const char *, char *, size_t, size_t);
ssize_t __recvfrom_chk(int, void *, size_t, size_t, int, struct sockaddr *, socklen_t *);
int __poll_chk(struct pollfd *, nfds_t, int, size_t);
void __stack_chk_fail(void);

static void p_printf_chk(void) {
    __snprintf_chk(text, sizeof text, 2, sizeof text, "%s %d %u %x %02x %lu %s", "a", -1, 2u, 3u, 4u, 5ul, "b");
    __sprintf_chk(text, 2, sizeof text, "%s %d %u", "a", -1, 2u);
    __fprintf_chk(stderr, 2, "%s[%s:%d]%s", "", "f", 1, "\r");
    __printf_chk(2, "%s %d\r", "x", 1); fflush(stdout);
}
static int vs_chk(const char *f, ...) { va_list ap; va_start(ap, f); int n = __vsnprintf_chk(text, sizeof text, 2, sizeof text, f, ap); va_end(ap); return n; }
static int vf_chk(const char *f, ...) { va_list ap; va_start(ap, f); int n = __vfprintf_chk(stderr, 2, f, ap); va_end(ap); return n; }
static void p_vprintf_chk(void) { vs_chk("%s %d %u %x %lu", "a", -1, 2u, 3u, 5ul); vf_chk("%s[%s:%s:%d]%s", "", "f", "g", 1, "\r"); }
static void p_strings_chk(void) {
    char a[64] = "Hello World, hello", b[64];
    __strcpy_chk(b, a, sizeof b); __strncpy_chk(b, a, sizeof b, sizeof b); __strncat_chk(b, "x", 2, sizeof b);
    __strcat_chk(b, "y", sizeof b); __memset_chk(b, 0, sizeof b, sizeof b); __memcpy_chk(b, a, 10, sizeof b);
    __memmove_chk(b + 1, b, 10, sizeof b - 1); sink32 = (uint32_t)b[3];
}
static void p_io_chk(void) {
    char b[256];
    FILE *f = fopen("/proc/meminfo", "r");
    if (f) { sink32 = (uint32_t)(__fgets_chk(b, sizeof b, sizeof b, f) != NULL); sink32 += (uint32_t)__fread_chk(b, sizeof b, 1, 16, f); fclose(f); }
    int fd = open("/proc/self/stat", O_RDONLY); sink32 += (uint32_t)__read_chk(fd, b, 16, sizeof b); close(fd);
    sink32 += (uint32_t)__readlink_chk("/proc/self/exe", b, sizeof b, sizeof b);
    int s = socket(AF_UNIX, SOCK_DGRAM, 0);
    struct pollfd p = {s, POLLIN, 0}; __poll_chk(&p, 1, 0, sizeof p);
    __recvfrom_chk(s, b, 16, sizeof b, MSG_DONTWAIT, NULL, NULL); close(s);
}
/* __stack_chk_fail ends the process (a smashed canary): measured up to the
 * SIGABRT it raises, which a handler turns back into a return. abort()
 * keeps its lock after that, so this probe runs in a child process. */
static sigjmp_buf abort_jump;
static void on_abort(int sig) { (void)sig; siglongjmp(abort_jump, 1); }
static void p_stack_chk_fail(void) {
    struct sigaction sa, old;
    memset(&sa, 0, sizeof sa); sa.sa_handler = on_abort; sigaction(SIGABRT, &sa, &old);
    if (sigsetjmp(abort_jump, 1) == 0) __stack_chk_fail();
    sigaction(SIGABRT, &old, NULL);
}

/* The library is built with 64-bit time and file offsets on armhf, so it
 * calls glibc's 64-bit entry points; this probe is built without, and
 * names them itself (their struct stat is the 64-bit one: a large buffer). */
int64_t __time64(int64_t *);
struct tm *__localtime64_r(const int64_t *, struct tm *);
int64_t __mktime64(struct tm *);
int __stat64_time64(const char *, void *);
int __fstat64_time64(int, void *);
int __ioctl_time64(int, unsigned long, ...);

static void p_time64(void) {
    int64_t t = __time64(NULL); struct tm tm;
    __localtime64_r(&t, &tm); sink64 = (uint64_t)__mktime64(&tm);
}
static void p_files64(void) {
    _Alignas(8) unsigned char st[512];
    __stat64_time64("/tmp", st);
    int fd = open64("/tmp/qvs-stack-probe.64", O_RDWR | O_CREAT | O_TRUNC, 0644);
    if (fd >= 0) {
        __fstat64_time64(fd, st);
        sink32 = (uint32_t)pwrite64(fd, "abcd", 4, 0); char b[4]; sink32 += (uint32_t)pread64(fd, b, 4, 0);
        ftruncate64(fd, 2); fdatasync(fd); fsync(fd);
        flock(fd, LOCK_EX); flock(fd, LOCK_UN);
        struct ifreq r; memset(&r, 0, sizeof r); __ioctl_time64(fd, SIOCGIFHWADDR, &r);
        close(fd);
    }
    FILE *f = fopen64("/tmp/qvs-stack-probe.64", "r"); if (f) fclose(f);
    unlink("/tmp/qvs-stack-probe.64");
    sink32 += (uint32_t)strspn("abc,d", "abc") + (uint32_t)syscall(SYS_getpid);
}

/* Short pauses: the frames are the same as for the algorithms' long ones. */
static void p_sleeps(void) { sleep(0); usleep(1); }

struct probe { const char *names; void (*fn)(void); int own_process; };
static const struct probe probes[] = {
    {"snprintf", p_snprintf}, {"sprintf", p_sprintf}, {"vsnprintf", p_vsnprintf}, {"vfprintf", p_vfprintf},
    {"fprintf", p_fprintf}, {"printf", p_printf}, {"puts", p_puts}, {"fputs", p_fputs}, {"fputc", p_fputc},
    {"fflush", p_fflush}, {"fopen fgets fclose", p_file}, {"__isoc99_fscanf", p_fscanf},
    {"__isoc99_sscanf", p_sscanf}, {"popen pclose", p_popen}, {"system", p_system}, {"mkdir rmdir", p_mkdir},
    {"access", p_access}, {"readlink", p_readlink},
    {"strcpy strncpy strncat strlen strnlen strcmp strncmp strncasecmp strcspn strchr strstr memset memcpy "
     "memmove memcmp memchr tolower __ctype_tolower_loc isspace isxdigit __errno_location",
     p_strings},
    {"strtok", p_strtok}, {"strtok_r", p_strtok_r}, {"strtol strtoll", p_strtol}, {"strtod", p_strtod},
    {"strdup", p_strdup}, {"malloc calloc realloc free", p_malloc},
    {"time localtime_r strftime mktime times sysconf", p_time},
    {"socket connect send recvfrom poll ioctl close inet_addr", p_sockets},
    {"getaddrinfo freeaddrinfo", p_getaddrinfo}, {"sigqueue", p_sigqueue},
    {"__aeabi_uldivmod __aeabi_ldivmod __aeabi_uidivmod __aeabi_idivmod __aeabi_uidiv __aeabi_idiv", p_division},
    {"fwrite fread fseek ftell rewind fgetc ungetc fileno getline rename stat open read write fdopen unlink remove",
     p_files2},
    {"opendir readdir closedir", p_dirs},
    {"strrchr strcasecmp atoi strtoul toupper abs strsep strerror getpid kill raise", p_misc},
    {"qsort bsearch", p_sort},
    {"gmtime_r localtime gettimeofday", p_time2},
    {"statvfs sysinfo", p_sys},

    {"perror", p_perror},
    {"ferror fstat truncate strcat", p_files3},
    {"sleep usleep", p_sleeps},
    {"__time64 __localtime64_r __mktime64", p_time64},
    {"__stat64_time64 __fstat64_time64 open64 pwrite64 pread64 ftruncate64 fdatasync fsync flock __ioctl_time64 "
     "fopen64 strspn syscall",
     p_files64},
    {"__snprintf_chk __sprintf_chk __fprintf_chk __printf_chk", p_printf_chk},
    {"__vsnprintf_chk __vfprintf_chk", p_vprintf_chk},
    {"__strcpy_chk __strncpy_chk __strncat_chk __strcat_chk __memset_chk __memcpy_chk __memmove_chk", p_strings_chk},
    {"__fgets_chk __fread_chk __read_chk __readlink_chk __poll_chk __recvfrom_chk", p_io_chk},
    {"__stack_chk_fail", p_stack_chk_fail, 1},
};

static void *run(void *arg) { ((void (*)(void))arg)(); return NULL; }

static size_t measure(void (*fn)(void)) {
    static unsigned char *mem;
    if (!mem) mem = aligned_alloc(4096, STACK);
    memset(mem, PAINT, STACK);
    pthread_attr_t at;
    pthread_attr_init(&at);
    pthread_attr_setstack(&at, mem, STACK);
    pthread_t t;
    if (pthread_create(&t, &at, run, (void *)fn) != 0) { perror("pthread_create"); exit(1); }
    pthread_join(t, NULL);
    pthread_attr_destroy(&at);
    size_t untouched = 0;
    while (untouched < STACK && mem[untouched] == PAINT) ++untouched;
    return STACK - untouched;
}

/* measure() in a child process; the figure comes back through a pipe. */
static size_t measure_in_child(void (*fn)(void)) {
    int fds[2];
    if (pipe(fds) != 0) { perror("pipe"); exit(1); }
    pid_t pid = fork();
    if (pid == 0) {
        size_t u = measure(fn);
        _exit(write(fds[1], &u, sizeof u) == (ssize_t)sizeof u ? 0 : 1);
    }
    close(fds[1]);
    size_t u = 0;
    int status = 0;
    ssize_t got = pid < 0 ? -1 : read(fds[0], &u, sizeof u);
    if (pid > 0) waitpid(pid, &status, 0);
    close(fds[0]);
    if (got != (ssize_t)sizeof u) { fprintf(stderr, "probe child failed (status %d)\n", status); exit(1); }
    return u;
}

int main(void) {
    size_t base = measure(p_empty);
    for (size_t i = 0; i < sizeof probes / sizeof probes[0]; ++i) {
        size_t used = 0;
        for (int k = 0; k < 3; ++k) {
            size_t u = probes[i].own_process ? measure_in_child(probes[i].fn) : measure(probes[i].fn);
            if (u > used) used = u;
        }
        used = used > base ? used - base : 0;
        char names[512];
        snprintf(names, sizeof names, "%s", probes[i].names);
        for (char *s, *n = strtok_r(names, " ", &s); n; n = strtok_r(NULL, " ", &s)) printf("%s %zu\n", n, used);
    }
    return 0;
}
