/* The public C interface for user model libraries: the records that cross the boundary and the
   table of operations that a library gets from the program. Plain C99; the kernel itself is built
   on these very records. Sample arrays are one-based: an array for n samples has n + 1 elements and
   element 0 is never a sample. Times in seconds, frequencies in hertz, wavelengths in meters, the
   squared magnitude of an optical field in watts. */
#ifndef PHOTRAK_USER_MODEL_H
#define PHOTRAK_USER_MODEL_H

#include <stddef.h>
#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Signal type codes of ports, nodes, Nodelist cells and SigRecords. */
enum PhotrakSigType {
    OpSigType = 0,
    ElecSigType = 1,
    OpOrElecSigType = 2,
    BinSigType = 3,
    UnknownSigType = 4,
    NoSigType = 5,
    EtcSigType = 6
};

/* Parameter type codes; there is no code 2. */
enum PhotrakParameterType {
    DoubleType = 0,
    IntType = 1,
    ComplexType = 3,
    CharType = 4,
    StringType = 5,
    EnumType = 6,
    DoubleArrayType = 7,
    IntArrayType = 8,
    BinaryArrayType = 9,
    ComplexArrayType = 10
};

/* Probability distributions of a parameter's deviation. */
enum PhotrakProbDist {
    NoProbDist = 0,
    GausProbDist = 1,
    TwoSigmaGausProbDist = 2,
    UniformProbDist = 3
};

enum PhotrakDomain { TimeDomain = 0, FreqDomain = 1 };
enum PhotrakUnitType { VoltageUnit = 0, CurrentUnit = 1 };

/* A complex number; in memory re, then im. C++ code starts at (0, 0). */
typedef struct Complex {
#ifdef __cplusplus
    double re = 0.0, im = 0.0;
#else
    double re, im;
#endif
} Complex;

/* One wavelength channel of an optical signal. The list owns its channels. */
typedef struct OpSig {
    struct OpSig *prev, *next;
    int32_t noPoints;      /* number of samples; 1 is a continuous level held in one sample */
    Complex* Ex_samples;   /* x polarization, noPoints + 1 elements; null if noPoints < 1 */
    Complex* Ey_samples;   /* y polarization; null means a single polarization */
    double tStep;          /* sample spacing, s */
    double startTime;      /* time of sample 1, s */
    double wavelength;     /* carrier, m */
    double* fftView;       /* Ex_samples as doubles: view[2k-1], view[2k] = re, im of sample k */
    int16_t domain;        /* enum PhotrakDomain */
    double bitRate;        /* bit/s */
    int32_t patternLength; /* bits in one pattern */
    int32_t spareCount;    /* 1 at creation; passed on from signal to signal */
    double RIN;            /* relative intensity noise, linear, 1/Hz */
    void* fos;             /* the fiber's working record; while set the OpSig cannot be freed */
    Complex* auxSamples;   /* third array or null; freed with the record, never copied */
} OpSig;

/* One power spectrum of amplified spontaneous emission. */
typedef struct OpSigASE {
    struct OpSigASE* next;
    int32_t noPoints;
    double* powerSamples; /* one-based, noPoints + 1 elements, W/Hz */
    double fstep;         /* Hz */
    double fstart;        /* frequency of point 1, Hz */
} OpSigASE;

/* What an optical port carries: a list of channels and a list of noise spectra, either may be
 * empty. */
typedef struct OpSignal {
    OpSig* channels;
    OpSigASE* noise;
} OpSignal;

typedef struct ElecSig {
    int32_t noPoints;
    Complex* elecSamples;  /* waveform; in the time domain the real part carries the value */
    Complex* sigmaSamples; /* standard deviation of the noise at each sample */
    double tStep, startTime;
    double* fftView;      /* elecSamples as doubles, as in OpSig */
    double* sigmaFftView; /* sigmaSamples as doubles */
    int16_t UnitType;     /* enum PhotrakUnitType, anything else is "UNKNOWN" */
    int16_t domain;
    double bitRate;
    int32_t patternLength;
    int32_t spareCount;
} ElecSig;

typedef struct BinSig {
    int32_t noPoints;     /* number of bits */
    int16_t* bitSequence; /* one-based, noPoints + 1 elements, each 0 or 1 */
    double bitRate;
    double startTime;
} BinSig;

/* The cell through which a model sees a port; one list for the inputs, one for the outputs. */
typedef struct Nodelist {
    struct Nodelist* next;
    int32_t sigType; /* a model that writes an output sets it to the code of what it wrote */
    void* sig;       /* OpSignal, ElecSig or BinSig; a model never frees or changes an input */
} Nodelist;

/* Value of an array parameter: rows * cols elements, row after row. */
typedef struct ArrayRecord {
    int32_t rows, cols;
    double rowStep, colStep;
    char *rowStepTitle, *colStepTitle, *rowStepUnits, *colStepUnits, *xUnits, *yUnits;
    int32_t kind; /* 0 double, 1 int32_t, 2 int16_t, 3 Complex */
    void* data;
} ArrayRecord;

/* One unit deviate drawn ahead for one evaluation of a parameter. */
typedef struct ParameterDraw {
    double re, im;
    struct ParameterDraw* next;
} ParameterDraw;

/* A parameter: what the user typed (texts) beside what a run uses (valactual). */
typedef struct Parameter {
    struct Parameter* next;
    int32_t type; /* enum PhotrakParameterType */
    char* name;
    char* value;     /* as typed; the chosen word of an EnumType */
    void* valactual; /* double, int32_t, Complex, char, int16_t index or ArrayRecord; null until
                        needed */
    char* DESC;
    void *min, *max; /* in the form of valactual */
    char* UNITS;     /* an EnumType keeps its list of words here */
    char* STDDEV;
    double* stddev;
    char* ISTDDEV;
    double* istddev;
    int32_t PROBDIST, IPROBDIST; /* enum PhotrakProbDist */
    ParameterDraw *draws, *drawCursor;
} Parameter;

/* Operations that the program offers to a library, in the order of the binary contract. Entries
   that allocate give 0 for success and 1 for exhausted memory, and store the new object through
   `place`, which is null after a failure. What they make is handed over by storing it in an output
   cell, or freed with the matching Free entry. */
typedef struct PhotrakSupport {
    int32_t (*Allocate)(void** place, size_t bytes); /* zeroed memory, freed with free() */
    int32_t (*FFTIndexToBin)(int32_t n, int32_t i);
    int32_t (*FFTBinToIndex)(int32_t n, int32_t k);
    int32_t (*DoFFTFlagged)(Complex* data, int32_t n, int32_t sign, int32_t flags);

    int32_t (*CreateBinSig)(BinSig** place, int32_t n);
    int32_t (*CreateBinSigFromElec)(BinSig** place, const ElecSig* source);
    int32_t (*CreateBinSigFromOp)(BinSig** place, const OpSig* source);
    int32_t (*FreeBinSig)(BinSig** place); /* leaves *place as it was */
    int32_t (*CopyBinSig)(BinSig** place, const BinSig* source);

    int32_t (*CreateElecSig)(ElecSig** place, int32_t n);
    int32_t (*CreateElecSigFromBin)(ElecSig** place, const BinSig* source, int32_t samplesPerBit);
    int32_t (*CreateElecSigFromOp)(ElecSig** place, const OpSig* source);
    int32_t (*FreeElecSig)(ElecSig** place);
    int32_t (*CopyElecSig)(ElecSig** place, const ElecSig* source);

    int32_t (*CreateOpSig)(OpSig** place, int32_t n);
    int32_t (*CreateOpSigFromBin)(OpSig** place, const BinSig* source, int32_t samplesPerBit);
    int32_t (*CreateOpSigFromElec)(OpSig** place, const ElecSig* source);
    int32_t (*FreeOpSig)(OpSig** place);
    int32_t (*FreeOpSigList)(OpSig** place);
    int32_t (*CopyOpSig)(OpSig** place, const OpSig* source);
    int32_t (*CopyOpSigList)(OpSig** place, const OpSig* source);

    int32_t (*CreateOpSigASE)(OpSigASE** place, int32_t n);
    int32_t (*FreeOpSigASE)(OpSigASE** place); /* *place moves on to the next record */
    int32_t (*FreeOpSigASEList)(OpSigASE** place);
    int32_t (*CopyOpSigASE)(OpSigASE** place, const OpSigASE* source);
    int32_t (*CopyOpSigASEList)(OpSigASE** place, const OpSigASE* source);

    int32_t (*CreateOpSignalWithSig)(OpSignal** place, int32_t n);
    int32_t (*CreateOpSignalFromBin)(OpSignal** place, const BinSig* source, int32_t samplesPerBit);
    int32_t (*CreateOpSignalFromElec)(OpSignal** place, const ElecSig* source);
    int32_t (*FreeOpSignal)(OpSignal** place); /* frees both lists, not the pair itself */
    int32_t (*CopyOpSignal)(OpSignal** place, const OpSignal* source);

    int32_t (*AddEySamples)(OpSig* sig);
    int32_t (*ResizeElecSig)(ElecSig* sig, int32_t n);
    int32_t (*ResizeOpSig)(OpSig* sig, int32_t n);

    int32_t (*CopyBitInfoOpToElec)(const OpSig* source, ElecSig* target);
    int32_t (*CopyBitInfoElecToOp)(const ElecSig* source, OpSig* target);
    int32_t (*CopyBitInfoBinToElec)(const BinSig* source, ElecSig* target);
    int32_t (*CopyBitInfoBinToOp)(const BinSig* source, OpSig* target);
} PhotrakSupport;

/* Version of the table above. A library may export `const int32_t photrak_support_version` with the
   value it was built against; the program refuses a library whose version differs. */
#define PHOTRAK_SUPPORT_VERSION 1

/* Run entry: status 0 success, 1 error, 2 warning. *message starts at an empty text; the library
   may point it at a text of its own that stays valid until its next call. */
typedef int16_t (*PhotrakRunEntry)(const PhotrakSupport* api, Parameter* parameters,
                                   Nodelist* inputs, Nodelist* outputs, char** message);
/* Test entry, for the Test button of the property dialog: a status other than 0 shows the message.
 */
typedef int16_t (*PhotrakTestEntry)(const PhotrakSupport* api, Parameter* parameters,
                                    char** message);

#ifdef __cplusplus
}
#endif
#endif
