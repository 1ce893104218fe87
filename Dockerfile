# The compiler, the run-time library and what builds suites with them:
#   docker build -t orvane . && docker run --rm -v "$PWD:/suite" -w /suite orvane orvane-run Hello.ttcn
FROM debian:bookworm AS build
RUN apt-get update && apt-get install -y --no-install-recommends \
    cmake ninja-build make g++ gcc bison m4 python3 libgtest-dev nlohmann-json3-dev && rm -rf /var/lib/apt/lists/*
COPY . /source
WORKDIR /source
RUN cmake --preset release && cmake --build --preset release --target product && cmake --install out/release --prefix /usr/local

FROM debian:bookworm-slim
RUN apt-get update && apt-get install -y --no-install-recommends gcc g++ make tcc python3 && rm -rf /var/lib/apt/lists/*
COPY --from=build /usr/local /usr/local
CMD ["orvane", "-h"]
