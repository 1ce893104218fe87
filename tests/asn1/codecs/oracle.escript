#!/usr/bin/env escript
%% The other codec. Arguments: RULE MODULE.asn..., requests on the standard input, an answer for each:
%%   make MODULE TYPE      encodes a value made at random
%%   take MODULE TYPE HEX  decodes the octets and encodes the value again
%% The answer is the octets, or "-" and what is wrong.
main([Rule | Files]) ->
    Options = case Rule of "uper" -> [uper]; "per" -> [per]; "ber" -> [ber] end,
    [ok = asn1ct:compile(File, Options ++ [{outdir, "."}, {i, "."}]) || File <- Files],
    code:add_patha("."),
    rand:seed(exsss, {1, 2, 3}),
    serve(io:get_line("")).

serve(eof) -> ok;
serve(Line) ->
    io:format("~s~n", [try answer(string:lexemes(string:trim(Line), " ")) catch _:Why -> wrong(Why) end]),
    serve(io:get_line("")).

answer(["make", Module, Type]) ->
    M = list_to_atom(Module), T = list_to_atom(Type),
    {ok, Value} = asn1ct:value(M, T),
    encode(M, T, Value);
answer(["take", Module, Type, Hex]) ->
    M = list_to_atom(Module), T = list_to_atom(Type),
    case M:decode(T, binary:decode_hex(list_to_binary(Hex))) of
        {ok, Value} -> encode(M, T, Value);
        {ok, Value, <<>>} -> encode(M, T, Value);
        Other -> wrong(Other)
    end.

encode(M, T, Value) ->
    case M:encode(T, Value) of
        {ok, Octets} -> binary:encode_hex(iolist_to_binary(Octets));
        Other -> wrong(Other)
    end.

wrong(Why) ->
    Text = lists:flatten(io_lib:format("~0p", [Why])),
    "- " ++ lists:sublist(Text, 200).
