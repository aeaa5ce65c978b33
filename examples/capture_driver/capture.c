/* A capture driver without a camera: what a driver does to have its frames processed by ppl.sys.

   It makes the frames itself, checks the pictures that come back, and tells a kernel debugger. The
   parts to copy are open_stream, process_frame and close_stream. */
#include <ntddk.h>
/* After the system's header. PPL_IMPORT comes from the build. */
#include <ppl.h>

#define WIDTH 320
#define HEIGHT 240

/* Frame buffers on 16-byte boundaries: at 16 the SSE2 kernels run, at 8 the older ones, and at less
   none at all. As static data of a driver they are never paged out, so a frame may be processed at
   DISPATCH_LEVEL. Buffers from ExAllocatePoolWithTag are aligned to 8 only on this platform: ask
   for 16 bytes more and round up. */
static DECLSPEC_ALIGN(16) UCHAR raw_frame[WIDTH * HEIGHT];
static DECLSPEC_ALIGN(16) UCHAR picture[WIDTH * HEIGHT * 4];

/* One camera's stream. Use it from one thread at a time; different streams may run in parallel. */
struct stream {
  PplContext *context;
};

static NTSTATUS open_stream(struct stream *stream) {
  /* There are eight contexts in the system, and no lock around them: where streams may be opened at
     the same time, hold a mutex around ppl_init and ppl_free. */
  stream->context = ppl_init();
  if (stream->context == NULL) return STATUS_INSUFFICIENT_RESOURCES;

  /* All controls are at their defaults. A setter returns 0 for a value that it does not take. */
  ppl_set_rgb_gain(stream->context, 290, 256, 330); /* 8.8 fixed point: 256 is one */
  ppl_set_gamma(stream->context, 2);

  /* The size may come with the first frame as well, which in some formats is then dropped. */
  if (!ppl_new_frame_size(stream->context, WIDTH, HEIGHT, WIDTH)) {
    ppl_free(stream->context);
    return STATUS_INVALID_PARAMETER;
  }
  return STATUS_SUCCESS;
}

static void close_stream(struct stream *stream) {
  ppl_free(stream->context);
  stream->context = NULL;
}

typedef uint8_t(PPL_CALL *convert_function)(PplContext *ctx, uint8_t *src, uint8_t *dst,
                                            uint32_t width, uint32_t height);

/* Processes one frame, at DISPATCH_LEVEL or below. ppl saves and restores the floating-point state
   by itself. The raw frame is used up: the camera's next one goes there. */
static BOOLEAN process_frame(struct stream *stream, convert_function convert) {
  if (convert(stream->context, raw_frame, picture, WIDTH, HEIGHT)) return TRUE;
  /* No kernel could run, because of the processor, the buffers' alignment or a failed save. The
     picture is a plain grey or white one, good enough to keep the stream going. */
  return FALSE;
}

/* What auto exposure and white balance start from: 8.8 fixed point, of the frame that ran last. */
static void print_means(const struct stream *stream) {
  const PplTriple *means = ppl_rgb_means_whole_frame(stream->context);
  DbgPrint("capture: means r %u g %u b %u\n", (unsigned)(means->r >> 8), (unsigned)(means->g >> 8),
           (unsigned)(means->b >> 8));
}

/* ---- What stands in for the camera and for whoever looks at the pictures. ---- */

static void expose(void) {
  unsigned x, y;
  for (y = 0; y < HEIGHT; ++y) {
    for (x = 0; x < WIDTH; ++x) {
      raw_frame[y * WIDTH + x] = (UCHAR)(16 + x / 2 + y / 4 + (x * y) % 7);
    }
  }
}

/* FNV-1a, 32 bits. */
static ULONG checksum(const UCHAR *bytes, ULONG count) {
  ULONG hash = 0x811C9DC5;
  while (count-- > 0) hash = (hash ^ *bytes++) * 0x01000193;
  return hash;
}

struct format {
  const char *name;
  convert_function convert;
  ULONG picture_bytes;
  ULONG expected; /* the same whichever kernels run */
};

static NTSTATUS run_frames(struct stream *stream) {
  const struct format formats[] = {
      {"I420", BaylorToI420MMX, WIDTH * HEIGHT * 3 / 2, 0x52B1B84C},
      {"YUYV", BaylorToYUYVMMX, WIDTH * HEIGHT * 2, 0xE9C50EA3},
      {"UYVY", BaylorToUYVYMMX, WIDTH * HEIGHT * 2, 0x42DC628F},
      {"RGB32", BaylorToRGB32MMX, WIDTH * HEIGHT * 4, 0x4832F758},
      {"RGB32, half the size", BaylorToRGB32MMX_deci_2_1, WIDTH * HEIGHT, 0x6E8E1017},
  };
  NTSTATUS status = STATUS_SUCCESS;
  unsigned i;
  for (i = 0; i < sizeof(formats) / sizeof(formats[0]); ++i) {
    const struct format *format = &formats[i];
    ULONG sum;
    expose();
    if (!process_frame(stream, format->convert)) {
      DbgPrint("capture: %s fallback\n", format->name);
      continue;
    }
    sum = checksum(picture, format->picture_bytes);
    if (sum == format->expected) {
      DbgPrint("capture: %s right\n", format->name);
    } else {
      DbgPrint("capture: %s WRONG, checksum %08x\n", format->name, (unsigned)sum);
      status = STATUS_UNSUCCESSFUL;
    }
  }
  print_means(stream);
  return status;
}

static void NTAPI unload(DRIVER_OBJECT *driver) {
  UNREFERENCED_PARAMETER(driver);
  DbgPrint("capture: unloaded\n");
}

NTSTATUS NTAPI DriverEntry(DRIVER_OBJECT *driver, UNICODE_STRING *registry_path) {
  struct stream stream;
  NTSTATUS status;
  UNREFERENCED_PARAMETER(registry_path);
  driver->DriverUnload = unload;

  status = open_stream(&stream);
  if (!NT_SUCCESS(status)) return status;
  status = run_frames(&stream);
  close_stream(&stream);
  return status;
}
