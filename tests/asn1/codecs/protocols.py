#!/usr/bin/env python3
"""Writes ASN.1 modules in the manner of real protocols: their trees of names, their containers of identified fields, their
ways of being extended. What such modules repeat in hundreds comes from tables here.

    protocols.py FOLDER                       writes them
    protocols.py FOLDER --orvane PROGRAM      and has them compiled, and their C too
"""

import argparse
import subprocess
import sys
from pathlib import Path


def module(name, body, imports="", tags="AUTOMATIC TAGS"):
    lines = [line for part in body for line in (part.splitlines() if isinstance(part, str) else part)]
    return name, f"{name} DEFINITIONS {tags} ::= BEGIN\n{imports}\n" + "\n".join(lines) + "\nEND\n"


def structure(name, fields, kind="SEQUENCE"):
    return [f"{name} ::= {kind} {{"] + [f"  {field}{',' if i + 1 < len(fields) else ''}"
                                         for i, field in enumerate(fields)] + ["}"]


# Types that the fields of protocols have, in the order in which they are dealt out.
PLAIN = ["INTEGER (0..255)", "BOOLEAN", "OCTET STRING (SIZE (4))", "ENUMERATED { on, off, unknown, ... }", "IA5String (SIZE (1..32))",
         "BIT STRING (SIZE (8))", "INTEGER (-128..127)", "OBJECT IDENTIFIER", "SEQUENCE (SIZE (1..3)) OF INTEGER (0..65535)", "NULL",
         "NumericString (SIZE (3..5))", "CHOICE { short [0] INTEGER (0..15), long [1] INTEGER (0..4294967295) }",
         "BIT STRING { first(0), second(1), ninth(8) } (SIZE (9..16))", "INTEGER (1..100, ..., 101..200)",
         "VisibleString (FROM (\"a\"..\"z\" | \"0\"..\"9\")) (SIZE (0..8))", "OCTET STRING (SIZE (1..8, ...))", "PrintableString",
         "INTEGER (0..18446744073709551615)", "ENUMERATED { n1(1), n2(2), n4(4), n8(8), spare(15) }", "SET OF BOOLEAN"]


def plain(number):
    return PLAIN[number % len(PLAIN)]


def management():
    """A tree of managed objects: groups of scalars and tables, and the messages that carry them."""
    groups = {"system": 9, "interfaces": 4, "at": 3, "ip": 25, "icmp": 26, "tcp": 20, "udp": 6, "snmp": 30, "host": 18, "bridge": 22}
    body = ["Counter32 ::= [APPLICATION 1] IMPLICIT INTEGER (0..4294967295)", "Gauge32 ::= [APPLICATION 2] IMPLICIT INTEGER (0..4294967295)",
            "TimeTicks ::= [APPLICATION 3] IMPLICIT INTEGER (0..4294967295)", "Opaque ::= [APPLICATION 4] IMPLICIT OCTET STRING",
            "Counter64 ::= [APPLICATION 6] IMPLICIT INTEGER (0..18446744073709551615)",
            "IpAddress ::= [APPLICATION 0] IMPLICIT OCTET STRING (SIZE (4))", "DisplayString ::= OCTET STRING (SIZE (0..255))",
            "mib-2 OBJECT IDENTIFIER ::= { iso org(3) dod(6) internet(1) mgmt(2) 1 }"]
    syntaxes = ["Counter32", "Gauge32", "TimeTicks", "DisplayString", "IpAddress", "Counter64", "INTEGER { up(1), down(2), testing(3) }"]
    for number, (group, count) in enumerate(groups.items(), 1):
        body.append(f"{group} OBJECT IDENTIFIER ::= {{ mib-2 {number} }}")
        body += [f"{group}Object{i} OBJECT IDENTIFIER ::= {{ {group} {i} }}" for i in range(1, count + 1)]
        row, columns = group.capitalize(), min(count, 12)
        body += [f"{group}Table OBJECT IDENTIFIER ::= {{ {group} {count + 1} }}", f"{group}Entry OBJECT IDENTIFIER ::= {{ {group}Table 1 }}"]
        body += [f"{group}Column{i} OBJECT IDENTIFIER ::= {{ {group}Entry {i} }}" for i in range(1, columns + 1)]
        body.append(f"{row}Table ::= SEQUENCE OF {row}Entry")
        body.append(structure(f"{row}Entry", [f"{group}Column{i} {syntaxes[(i + number) % len(syntaxes)]}" for i in range(1, columns + 1)]))
    body += ["ObjectSyntax ::= CHOICE { number INTEGER (-2147483648..2147483647), string OCTET STRING, object OBJECT IDENTIFIER,",
             "  address IpAddress, counter Counter32, gauge Gauge32, ticks TimeTicks, arbitrary Opaque, big Counter64 }",
             "VarBind ::= SEQUENCE { name OBJECT IDENTIFIER, CHOICE-OF-VALUES }".replace("CHOICE-OF-VALUES", "content CHOICE {\n  value ObjectSyntax, "
             "unSpecified NULL, noSuchObject [0] IMPLICIT NULL, noSuchInstance [1] IMPLICIT NULL, endOfMibView [2] IMPLICIT NULL }"),
             "Pdu ::= SEQUENCE { request-id INTEGER (-2147483648..2147483647), error-status INTEGER { noError(0), tooBig(1), inconsistentName(18) } (0..18),",
             "  error-index INTEGER (0..max-bindings), variable-bindings SEQUENCE (SIZE (0..max-bindings)) OF VarBind }",
             "max-bindings INTEGER ::= 2147483647",
             "Pdus ::= CHOICE { " + ", ".join(f"{name} [{i}] IMPLICIT Pdu" for i, name in enumerate(
                 ("get-request", "get-next-request", "get-response", "set-request"))) + " }"]
    return [module("Management-Tree", body, tags="")]


def directory():
    """A directory's operations, with results that all share, filters within filters, and controls."""
    result = "resultCode ENUMERATED { success(0), operationsError(1), protocolError(2), referral(10), noSuchObject(32), busy(51), other(80), ... },\n" \
             "  matchedDN LDAPDN, diagnosticMessage LDAPString, referral [3] SEQUENCE (SIZE (1..MAX)) OF LDAPString OPTIONAL"
    operations = ["bind", "unbind", "search", "modify", "add", "del", "modDN", "compare", "extended"]
    body = ["LDAPString ::= OCTET STRING", "LDAPDN ::= LDAPString", "AttributeDescription ::= LDAPString", "maxInt INTEGER ::= 2147483647",
            "MessageID ::= INTEGER (0..maxInt)", f"LDAPResult ::= SEQUENCE {{ {result} }}",
            "PartialAttribute ::= SEQUENCE { type AttributeDescription, vals SET OF OCTET STRING }",
            "Attribute ::= PartialAttribute (WITH COMPONENTS { ..., vals (SIZE (1..MAX)) })",
            "Filter ::= CHOICE { and [0] SET SIZE (1..MAX) OF Filter, or [1] SET SIZE (1..MAX) OF Filter, not [2] EXPLICIT Filter,",
            "  equalityMatch [3] Assertion, substrings [4] Substrings, greaterOrEqual [5] Assertion, present [7] AttributeDescription, ... }",
            "Assertion ::= SEQUENCE { attributeDesc AttributeDescription, assertionValue OCTET STRING }",
            "Substrings ::= SEQUENCE { type AttributeDescription, substrings SEQUENCE SIZE (1..MAX) OF CHOICE {",
            "  initial [0] OCTET STRING, any [1] OCTET STRING, final [2] OCTET STRING } }",
            "Controls ::= SEQUENCE OF SEQUENCE { controlType LDAPString, criticality BOOLEAN DEFAULT FALSE, controlValue OCTET STRING OPTIONAL }"]
    for number, name in enumerate(operations):
        extra = [f"f{i} [{i}] {plain(number + i)} OPTIONAL" for i in range(1 + number % 4)]
        request = {"bind": "version INTEGER (1..127), name LDAPDN, authentication CHOICE { simple [0] OCTET STRING, sasl [3] SEQUENCE { mechanism LDAPString, "
                           "credentials OCTET STRING OPTIONAL }, ... }",
                   "search": "baseObject LDAPDN, scope ENUMERATED { baseObject(0), singleLevel(1), wholeSubtree(2) }, sizeLimit INTEGER (0..maxInt), typesOnly BOOLEAN, "
                             "filter Filter, attributes SEQUENCE OF AttributeDescription",
                   "modify": "object LDAPDN, changes SEQUENCE OF SEQUENCE { operation ENUMERATED { add, delete, replace, ... }, modification PartialAttribute }",
                   "add": "entry LDAPDN, attributes SEQUENCE OF Attribute"}.get(name, "entry LDAPDN")
        body.append(structure(f"{name.capitalize()}Request", [request, *extra]).copy())
        body[-1][0] = body[-1][0].replace("::= ", f"::= [APPLICATION {2 * number}] ")
        body.append([f"{name.capitalize()}Response ::= [APPLICATION {2 * number + 1}] SEQUENCE {{ COMPONENTS OF LDAPResult, extra [7] {plain(number + 9)} OPTIONAL }}"])
    body.append(structure("ProtocolOp", [f"{name}{kind} {name.capitalize()}{kind}" for name in operations for kind in ("Request", "Response")] + ["..."], "CHOICE"))
    body.append("LDAPMessage ::= SEQUENCE { messageID MessageID, protocolOp ProtocolOp, controls [0] Controls OPTIONAL }")
    return [module("Directory-Access", body, tags="IMPLICIT TAGS")]


def signalling():
    """Messages that grew over versions: markers, additions, groups of additions, choices with new alternatives."""
    names = ["Setup", "CallProceeding", "Connect", "Alerting", "Information", "ReleaseComplete", "Facility", "Progress", "Status", "Notify", "RegistrationRequest",
             "RegistrationConfirm", "AdmissionRequest", "AdmissionConfirm", "AdmissionReject", "BandwidthRequest", "LocationRequest", "DisengageRequest"]
    body = ["AliasAddress ::= CHOICE { dialedDigits IA5String (SIZE (1..128)) (FROM (\"0123456789#*,\")), id BIT STRING (SIZE (1..64)), ...,",
            "  url IA5String (SIZE (1..512)), transport TransportAddress, number PartyNumber }",
            "TransportAddress ::= CHOICE { ip SEQUENCE { ip OCTET STRING (SIZE (4)), port INTEGER (0..65535) }, ipSourceRoute SEQUENCE {",
            "  ip OCTET STRING (SIZE (4)), port INTEGER (0..65535), route SEQUENCE OF OCTET STRING (SIZE (4)), routing CHOICE { strict NULL, loose NULL, ... }, ... }, ...,",
            "  nsap OCTET STRING (SIZE (1..20)), ip6 SEQUENCE { ip OCTET STRING (SIZE (16)), port INTEGER (0..65535), ... } }",
            "PartyNumber ::= CHOICE { e164 SEQUENCE { type ENUMERATED { unknown, national, ... }, digits NumericString (SIZE (1..20)) }, data IA5String, ... }",
            "NonStandard ::= SEQUENCE { id CHOICE { object OBJECT IDENTIFIER, h221 SEQUENCE { country INTEGER (0..255), maker INTEGER (0..65535), ... }, ... }, data OCTET STRING }"]
    for n, name in enumerate(names):
        root = [f"r{i} {plain(n + i)}{' OPTIONAL' if i % 3 == 1 else ''}" for i in range(4)] + ["address AliasAddress", "more NonStandard OPTIONAL"]
        added = [f"a{i} {plain(3 * n + i)}{' OPTIONAL' if i % 2 else ''}" for i in range(n % 5)]
        group = [f"[[ g{n} {plain(n + 7)}, h{n} TransportAddress OPTIONAL ]]"] if n % 2 else []
        end = ["...", f"z{n} {plain(n + 11)}"] if n % 3 == 2 else []
        body.append(structure(f"{name}-UUIE", root + ["..."] + added + group + end))
    lower = [name[0].lower() + name[1:] for name in names]
    body.append(structure("Message", [f"{low} {name}-UUIE" for low, name in list(zip(lower, names))[:8]] + ["..."] +
                          [f"{low} {name}-UUIE" for low, name in list(zip(lower, names))[8:]], "CHOICE"))
    return [module("Call-Signalling", body)]


def containers():
    """Procedures whose messages are containers of fields, each with a number, a criticality and an open type."""
    procedures = ["Setup", "Reset", "Paging", "Handover", "Release", "Overload", "Trace", "Update", "Transport", "Capability"]
    body, constants, sets = [], [], []
    for n in range(60):
        constants.append(f"id-field{n} ProtocolIE-ID ::= {n if n < 50 else 200 + n}")
        body.append(f"Field{n} ::= {plain(n)}" if n % 4 else structure(f"Field{n}", [f"a {plain(n + 1)}", f"b {plain(n + 2)} OPTIONAL", "..."]))
    for n, name in enumerate(procedures):
        constants.append(f"id-{name} INTEGER ::= {n}")
        rows = [f"{{ ID id-field{(7 * n + i) % 60} CRITICALITY {('reject', 'ignore', 'notify')[i % 3]} TYPE Field{(7 * n + i) % 60} PRESENCE "
                f"{('mandatory', 'optional', 'conditional')[i % 3]} }}" for i in range(6)]
        sets.append([f"{name}-IEs SIGNAL-PROTOCOL-IES ::= {{"] + [f"  {row} |" for row in rows[:-1]] + [f"  {rows[-1]},", "  ...", "}",
                    f"{name} ::= SEQUENCE {{ protocolIEs ProtocolIE-Container {{{{{name}-IEs}}}}, ... }}"])
    common = """SIGNAL-PROTOCOL-IES ::= CLASS { &id ProtocolIE-ID UNIQUE, &criticality Criticality, &Value, &presence Presence }
WITH SYNTAX { ID &id CRITICALITY &criticality TYPE &Value PRESENCE &presence }
SIGNAL-PROCEDURE ::= CLASS { &InitiatingMessage, &SuccessfulOutcome OPTIONAL, &procedureCode INTEGER (0..255) UNIQUE, &criticality Criticality DEFAULT ignore }
WITH SYNTAX { INITIATING MESSAGE &InitiatingMessage [SUCCESSFUL OUTCOME &SuccessfulOutcome] PROCEDURE CODE &procedureCode [CRITICALITY &criticality] }
ProtocolIE-Container { SIGNAL-PROTOCOL-IES : IEsSetParam } ::= SEQUENCE (SIZE (0..maxIEs)) OF ProtocolIE-Field {{IEsSetParam}}
ProtocolIE-Field { SIGNAL-PROTOCOL-IES : IEsSetParam } ::= SEQUENCE {
  id SIGNAL-PROTOCOL-IES.&id ({IEsSetParam}),
  criticality SIGNAL-PROTOCOL-IES.&criticality ({IEsSetParam}{@id}),
  value SIGNAL-PROTOCOL-IES.&Value ({IEsSetParam}{@id}) }"""
    elementary = ["Procedures SIGNAL-PROCEDURE ::= {"] + [
        f"  {{ INITIATING MESSAGE {name} {'SUCCESSFUL OUTCOME ' + procedures[n - 1] + ' ' if n % 2 else ''}PROCEDURE CODE id-{name} CRITICALITY reject }} |"
        for n, name in enumerate(procedures)]
    elementary[-1] = elementary[-1][:-2] + ","
    elementary += ["  ...", "}", *structure("Signal-PDU", ["initiatingMessage InitiatingMessage", "successfulOutcome SuccessfulOutcome", "..."], "CHOICE")]
    for name in ("InitiatingMessage", "SuccessfulOutcome"):
        elementary += [f"{name} ::= SEQUENCE {{ procedureCode SIGNAL-PROCEDURE.&procedureCode ({{Procedures}}),",
                       "  criticality SIGNAL-PROCEDURE.&criticality ({Procedures}{@procedureCode}),",
                       f"  value SIGNAL-PROCEDURE.&{name} ({{Procedures}}{{@procedureCode}}) }}"]
    types = ["Criticality ::= ENUMERATED { reject, ignore, notify }", "Presence ::= ENUMERATED { optional, conditional, mandatory }",
             "ProtocolIE-ID ::= INTEGER (0..65535)", "maxIEs INTEGER ::= 65535", *constants]
    fields = ", ".join(f"Field{n}" for n in range(60))
    ids = ", ".join([f"id-field{n}" for n in range(60)] + [f"id-{name}" for name in procedures])
    return [module("Signal-Common", types), module("Signal-IEs", body),
            module("Signal-Procedures", [common, *sets, elementary],
                   f"IMPORTS Criticality, Presence, ProtocolIE-ID, maxIEs, {ids} FROM Signal-Common {fields} FROM Signal-IEs;")]


def radio():
    """Messages of bits: spare values, critical extensions as alternatives, later versions nested in earlier ones."""
    body = ["maxCells INTEGER ::= 8", "PhysCellId ::= INTEGER (0..503)", "TransactionId ::= INTEGER (0..3)",
            "CellIdentity ::= BIT STRING (SIZE (28))", "MCC-MNC-Digit ::= INTEGER (0..9)"]
    for n in range(24):
        name = f"Config{n}"
        fields = [f"p{i} {plain(2 * n + i)}{' OPTIONAL' if i % 2 else ''}" for i in range(3)]
        values = [f"ms{2 ** i}" for i in range(n % 6 + 2)] + [f"spare{i}" for i in range(1, 3)]
        fields += [f"timer ENUMERATED {{ {', '.join(values)} }}", f"setup CHOICE {{ release NULL, setup SEQUENCE {{ index INTEGER (0..{2 ** (n % 20 + 1) - 1}), id CellIdentity }} }}"]
        body.append(structure(name, fields + (["..."] if n % 2 else [])))
        extension = "nonCriticalExtension SEQUENCE { } OPTIONAL"
        for version in range(n % 4):
            extension = f"v{version} {plain(n + version)} OPTIONAL, nonCriticalExtension SEQUENCE {{ {extension} }} OPTIONAL"
        body += [f"Message{n} ::= SEQUENCE {{ transaction TransactionId, criticalExtensions CHOICE {{ c1 CHOICE {{ r8 Message{n}-r8, spare3 NULL, spare2 NULL, spare1 NULL }},",
                 "  criticalExtensionsFuture SEQUENCE { } } }"]
        body.append(structure(f"Message{n}-r8", [f"config {name}", f"list SEQUENCE (SIZE (1..maxCells)) OF SEQUENCE {{ cell PhysCellId, other Config{n // 2} OPTIONAL }}", extension]))
    body.append(structure("DL-Message", ["message CHOICE { c1 CHOICE { " + ", ".join(f"message{n} Message{n}" for n in range(16)) + " }, messageClassExtension SEQUENCE { } }"]))
    return [module("Radio-Resource", body)]


def operations():
    """Remote operations: invocations, results and errors whose arguments the operation's code chooses."""
    names = ["updateLocation", "cancelLocation", "sendRoutingInfo", "provideRoamingNumber", "insertSubscriberData", "deleteSubscriberData", "forwardShortMessage",
             "sendAuthenticationInfo", "restoreData", "processUnstructuredRequest", "readyForSM", "reset"]
    errors = ["unknownSubscriber", "roamingNotAllowed", "systemFailure", "dataMissing", "unexpectedDataValue"]
    head = """OPERATION ::= CLASS { &Argument OPTIONAL, &Result OPTIONAL, &operationCode INTEGER UNIQUE }
WITH SYNTAX { [ARGUMENT &Argument] [RESULT &Result] CODE &operationCode }
ERROR ::= CLASS { &Parameter OPTIONAL, &errorCode INTEGER UNIQUE } WITH SYNTAX { [PARAMETER &Parameter] CODE &errorCode }
InvokeIdType ::= INTEGER (-128..127)
ISDN-Address ::= OCTET STRING (SIZE (1..9))
IMSI ::= OCTET STRING (SIZE (3..8))
ExtensionContainer ::= SEQUENCE { list [0] SEQUENCE SIZE (1..10) OF SEQUENCE { id OBJECT IDENTIFIER, data OCTET STRING OPTIONAL } OPTIONAL, ... }
Component ::= CHOICE { invoke [1] Invoke, returnResult [2] ReturnResult, returnError [3] ReturnError, reject [4] Reject }
Invoke ::= SEQUENCE { invokeID InvokeIdType, linkedID [0] InvokeIdType OPTIONAL, opCode OPERATION.&operationCode ({Operations}),
  parameter OPERATION.&Argument ({Operations}{@opCode}) OPTIONAL }
ReturnResult ::= SEQUENCE { invokeID InvokeIdType, opCode OPERATION.&operationCode ({Operations}), parameter OPERATION.&Result ({Operations}{@opCode}) OPTIONAL }
ReturnError ::= SEQUENCE { invokeID InvokeIdType, errorCode ERROR.&errorCode ({Errors}), parameter ERROR.&Parameter ({Errors}{@errorCode}) OPTIONAL }
Reject ::= SEQUENCE { invokeID CHOICE { derivable InvokeIdType, not-derivable NULL }, problem CHOICE { general [0] INTEGER { unrecognized(0), mistyped(1) } (0..2),
  invoke [1] INTEGER (0..7), returnResult [2] INTEGER (0..2) } }"""
    body = [head]
    for n, name in enumerate(names):
        kind = name[0].upper() + name[1:]
        body.append(structure(f"{kind}Arg", ["imsi IMSI"] + [f"f{i} [{i}] {plain(n + 2 * i)} OPTIONAL" for i in range(4)] + ["address [9] ISDN-Address", "extension [10] ExtensionContainer OPTIONAL", "..."]))
        body.append(structure(f"{kind}Res", [f"number ISDN-Address", f"state [1] {plain(n + 3)} OPTIONAL", "..."]))
        body.append(f"{name} OPERATION ::= {{ ARGUMENT {kind}Arg {f'RESULT {kind}Res ' if n % 3 else ''}CODE {n * 5 + 2} }}")
    for n, name in enumerate(errors):
        kind = name[0].upper() + name[1:]
        body += [f"{kind}Param ::= SEQUENCE {{ cause ENUMERATED {{ a{n}(0), b{n}(3), ... }} OPTIONAL, extension [0] ExtensionContainer OPTIONAL, ... }}",
                 f"{name} ERROR ::= {{ PARAMETER {kind}Param CODE {n * 7 + 1} }}"]
    body += [f"Operations OPERATION ::= {{ {' | '.join(names)}, ... }}", f"Errors ERROR ::= {{ {' | '.join(errors)} }}"]
    return [module("Mobile-Operations", body, tags="IMPLICIT TAGS")]


MODULES = [one for protocol in (management, directory, signalling, containers, radio, operations) for one in protocol()]


def compile_all(orvane, folder):
    names = [f"{name}.asn" for name, _ in MODULES]
    orvane = str(Path(orvane).resolve())
    done = subprocess.run([orvane, "-F", "-A", *names], cwd=folder, text=True, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
    if done.returncode != 0 or "Unsupported" in done.stdout:
        sys.exit(f"status {done.returncode}\n{done.stdout[-3000:]}")
    include = f"-I{Path(orvane).parent.parent / 'include'}"
    for source in sorted(folder.glob("*.c")):
        done = subprocess.run(["gcc", "-std=c11", "-Wall", "-Werror", "-Wno-unused", "-fsyntax-only", include, source.name], cwd=folder, text=True,
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        if done.returncode != 0:
            sys.exit(f"{source.name}\n{done.stdout[-3000:]}")
    print(f"{sum(text.count(chr(10)) for _, text in MODULES)} lines in {len(MODULES)} modules")


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("folder", type=Path)
    parser.add_argument("--orvane")
    arguments = parser.parse_args()
    arguments.folder.mkdir(parents=True, exist_ok=True)
    for name, text in MODULES:
        (arguments.folder / f"{name}.asn").write_text(text)
    if arguments.orvane:
        compile_all(arguments.orvane, arguments.folder)


main()
