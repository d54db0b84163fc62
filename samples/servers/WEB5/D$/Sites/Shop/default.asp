<%@ Language="VBScript" %>
<html><body><h1>Print shop</h1><p>Session <%= Session.SessionID %></p></body></html>
